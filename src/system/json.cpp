#include "system/json.h"

#include <rapidjson/encodedstream.h>
#include <rapidjson/memorystream.h>

bool parseJsonObject(std::string_view text, rapidjson::Document& document) {
    // The encoded stream skips a byte order mark. To the parser a zero byte is the end of the text, wherever it stands.
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
