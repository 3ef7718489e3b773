#pragma once

// The text form of Launcher.conf: one "key=value" per line. Any thread.

#include <string>
#include <string_view>

// Both write reserved bytes as "%" and two upper-case hexadecimal digits.
[[nodiscard]] std::string encodeSettingKey(std::string_view key);
[[nodiscard]] std::string encodeSettingValue(std::string_view value);

// Decodes a key or a value. A "%" without two hexadecimal digits after it stays as it is.
[[nodiscard]] std::string decodeSettingText(std::string_view text);

// Removes tabs, carriage returns and spaces at both ends.
[[nodiscard]] std::string_view trimSettingText(std::string_view text);

// Splits a line at its first "=", then trims and decodes both sides. False when there is no "=".
[[nodiscard]] bool splitSettingLine(std::string_view line, std::string& key, std::string& value);

// Removes the next line from the front of `text` and trims it. False at the end of the text.
[[nodiscard]] bool nextSettingLine(std::string_view& text, std::string_view& line);
