#pragma once

// JSON from outside: configuration file, token and userinfo answers, update manifest. Any thread.

#include <string>
#include <string_view>

#include <rapidjson/document.h>

// Parses one document whose root is an object. A leading UTF-8 byte order mark is skipped, anything but white space
// after the root is an error, and nesting of any depth is safe: the parser does not recurse.
[[nodiscard]] bool parseJsonObject(std::string_view text, rapidjson::Document& document);

// The named member's text when `object` is an object that holds that member and it is a string; otherwise empty.
// Of duplicate members the first counts.
std::string jsonStringMember(const rapidjson::Value& object, const char* key);
