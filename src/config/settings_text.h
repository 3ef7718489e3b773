#pragma once

// Reads and writes the lines of Launcher.conf, "key=value". Any thread.

#include <string>
#include <string_view>

// Replace each reserved byte by "%" and two upper-case hexadecimal digits. The reserved bytes of a key are the space,
// "%", "/", "=", "@" and "\"; those of a value are the line feed, "%" and "@".
[[nodiscard]] std::string encodeSettingKey(std::string_view key);
[[nodiscard]] std::string encodeSettingValue(std::string_view value);

// Decodes a key or a value. A "%" without two hexadecimal digits after it stays as it is.
[[nodiscard]] std::string decodeSettingText(std::string_view text);

// Removes tabs, carriage returns and spaces at both ends.
[[nodiscard]] std::string_view trimSettingText(std::string_view text);

// Splits a line at its first "=", then trims and decodes both parts. False if there is no "=".
[[nodiscard]] bool splitSettingLine(std::string_view line, std::string& key, std::string& value);

// Moves the first line of `text` to `line` and trims it. False if `text` is empty.
[[nodiscard]] bool nextSettingLine(std::string_view& text, std::string_view& line);
