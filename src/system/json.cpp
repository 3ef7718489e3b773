#include "system/json.h"

#include <algorithm>
#include <cstddef>

#include <rapidjson/encodedstream.h>
#include <rapidjson/memorystream.h>

namespace {

// A value takes up to 45 bytes of memory, so 4 MiB of "[" or "0," would take more than 80 MB (measured).
constexpr std::ptrdiff_t kMaxValues = 500000;

// True if the text may contain more values than this. Counts the bytes that begin a value; those in texts count too.
bool hasTooManyValues(std::string_view text) {
    return std::ranges::count_if(text, [](char byte) { return byte == ',' || byte == '[' || byte == '{'; }) >
           kMaxValues;
}

} // namespace

bool parseJsonObject(std::string_view text, rapidjson::Document& document) {
    if (hasTooManyValues(text)) return false;
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
