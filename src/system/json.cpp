#include "system/json.h"

bool parseJsonObject(std::string_view text, rapidjson::Document& document) {
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    if (text.starts_with(byteOrderMark)) text.remove_prefix(byteOrderMark.size());
    // From pointer and length: a text may hold a zero byte, and need not end in one.
    document.Parse<rapidjson::kParseIterativeFlag>(text.data(), text.size());
    return !document.HasParseError() && document.IsObject();
}

std::string jsonStringMember(const rapidjson::Value& object, const char* key) {
    if (!object.IsObject()) return {};
    const auto member = object.FindMember(key);
    if (member == object.MemberEnd() || !member->value.IsString()) return {};
    return {member->value.GetString(), member->value.GetStringLength()};
}
