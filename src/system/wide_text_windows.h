#pragma once

// Text on its way to and from the wide interfaces of Windows, crude on purpose: what is ASCII survives, and a path that
// holds anything else does not name its file. Any thread.

#include <string>

// Each byte becomes one unit by sign extension, and each unit keeps its low byte.
std::wstring widenBytes(const std::string& text);
std::string narrowUnits(const wchar_t* units);

// One argument of a command line, in quotes, so that the C runtime of the program that is started gives it back as it
// was: with its blanks, quotes and backslashes.
std::wstring quoteCommandLineArgument(const std::string& text);
