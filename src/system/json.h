#pragma once

// Parses untrusted JSON: the configuration file and the responses of servers. Any thread.

#include <string>
#include <string_view>

#include <rapidjson/document.h>

// Parses one document whose root is an object. Skips a leading UTF-8 byte order mark. Returns false for any other root
// and for text after the root, except white space. Any depth of nesting is safe, because the parser does not recurse.
[[nodiscard]] bool parseJsonObject(std::string_view text, rapidjson::Document& document);

// Returns the text of a string member. Empty if `object` is not an object, or if the member is absent or not a string.
// If there are several members with this key, returns the first.
[[nodiscard]] std::string jsonStringMember(const rapidjson::Value& object, const char* key);
