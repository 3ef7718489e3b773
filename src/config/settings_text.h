#pragma once

// The text form of Launcher.conf: one "key=value" to a line. Any thread.

#include <string>
#include <string_view>

// Both write the bytes that the format reserves as "%" and two upper-case hexadecimal digits.
std::string encodeSettingKey(std::string_view key);
std::string encodeSettingValue(std::string_view value);

// Undoes either. A "%" that two hexadecimal digits do not follow stands for itself.
std::string decodeSettingText(std::string_view text);

// Without the tabs, carriage returns and spaces at both ends.
std::string_view trimSettingText(std::string_view text);

// Splits a line at its first "=" and gives both sides trimmed and decoded. False when there is none.
[[nodiscard]] bool splitSettingLine(std::string_view line, std::string& key, std::string& value);

// Takes the next line, trimmed, from the front of `text`; a last line need not be ended. False at the end of the text.
[[nodiscard]] bool nextSettingLine(std::string_view& text, std::string_view& line);
