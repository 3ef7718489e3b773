#pragma once

// Converts text to and from the wide interfaces of Windows. Deliberately simple: only ASCII survives, so a path that
// holds other characters does not name its file. Any thread.

#include <string>

// widenBytes makes one unit of each byte by sign extension. narrowUnits keeps the low byte of each unit.
[[nodiscard]] std::wstring widenBytes(const std::string& text);
[[nodiscard]] std::string narrowUnits(const wchar_t* units);

// Quotes one argument of a command line so that the C runtime of the started program gets it unchanged.
[[nodiscard]] std::wstring quoteCommandLineArgument(const std::string& text);
