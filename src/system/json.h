#pragma once

// Parses untrusted JSON: the configuration file, answers of servers. Any thread.

#include <string>
#include <string_view>

#include <rapidjson/document.h>

// Parses one document whose root is an object. A leading UTF-8 byte order mark is skipped. Text after the root, other
// than white space, is an error. Any depth of nesting is safe: the parser does not recurse.
[[nodiscard]] bool parseJsonObject(std::string_view text, rapidjson::Document& document);

// The text of a string member; empty when `object` is no object, or the member is absent or no string. Of duplicate
// members the first counts.
[[nodiscard]] std::string jsonStringMember(const rapidjson::Value& object, const char* key);
