#pragma once

// Converts text for the wide-character functions of Windows. The conversion is simple on purpose and preserves only
// ASCII: a file whose path has other characters is not found. Any thread.

#include <string>

// Sign-extends each byte to one UTF-16 code unit.
[[nodiscard]] std::wstring widenBytes(const std::string& text);

// Keeps the low byte of each code unit.
[[nodiscard]] std::string narrowUnits(const wchar_t* units);

// Quotes one argument of a command line, so that the started program receives it unchanged.
[[nodiscard]] std::wstring quoteCommandLineArgument(const std::string& text);
