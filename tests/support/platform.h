#pragma once

// Contains the differences between Linux and Windows that tests need for their expectations.

#include <string>

#ifdef _WIN32
inline constexpr bool kOnWindows = true;
inline constexpr char kPlatformName[] = "windows";
#else
inline constexpr bool kOnWindows = false;
inline constexpr char kPlatformName[] = "linux";
#endif

// Returns the bytes of a file to which `text` was written in text mode.
inline std::string asTextFile(const std::string& text) {
    if (!kOnWindows) return text;
    std::string lines;
    for (const char letter : text)
        lines += letter == '\n' ? std::string("\r\n") : std::string(1, letter);
    return lines;
}
