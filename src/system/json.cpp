#include "system/json.h"

#include <algorithm>
#include <cstddef>

#include <rapidjson/encodedstream.h>
#include <rapidjson/memorystream.h>

namespace {

// Limits the memory of a parsed text: a value takes up to 45 bytes, so without a limit 4 MiB of "[" or "0," would take
// more than 80 MB (measured).
constexpr std::ptrdiff_t kMaxValues = 500000;

// True if the text may contain more than kMaxValues values. Counts commas and opening brackets, including those inside
// strings.
bool hasTooManyValues(std::string_view text) {
    return std::ranges::count_if(text, [](char byte) { return byte == ',' || byte == '[' || byte == '{'; }) >
           kMaxValues;
}

} // namespace

bool parseJsonObject(std::string_view text, rapidjson::Document& document) {
    if (hasTooManyValues(text)) return false;
    // EncodedInputStream skips a byte order mark. The parser stops at a zero byte without an error, so Tell() must show
    // that it has read the whole text.
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
