#include "system/json.h"

#include <rapidjson/encodedstream.h>
#include <rapidjson/memorystream.h>

bool parseJsonObject(std::string_view text, rapidjson::Document& document) {
    // EncodedInputStream skips a byte order mark. The parser stops at a zero byte, so check also that it has read all.
    rapidjson::MemoryStream bytes(text.data(), text.size());
    rapidjson::EncodedInputStream<rapidjson::UTF8<>, rapidjson::MemoryStream> stream(bytes);
    document.ParseStream<rapidjson::kParseIterativeFlag, rapidjson::UTF8<>>(stream);
    return !document.HasParseError() && bytes.Tell() == text.size() && document.IsObject();
}

std::string jsonStringMember(const rapidjson::Value& object, const char* key) {
    if (!object.IsObject()) return {};
    const auto member = object.FindMember(key);
    if (member == object.MemberEnd() || !member->value.IsString()) return {};
    return {member->value.GetString(), member->value.GetStringLength()};
}
