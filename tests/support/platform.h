#pragma once

// Differences between the platforms, for expectations that are otherwise the same.

#include <string>

#ifdef _WIN32
inline constexpr bool kOnWindows = true;
inline constexpr char kPlatformName[] = "windows";
#else
inline constexpr bool kOnWindows = false;
inline constexpr char kPlatformName[] = "linux";
#endif

// The bytes of a text that was written in text mode.
inline std::string asTextFile(const std::string& text) {
    if (!kOnWindows) return text;
    std::string lines;
    for (const char letter : text)
        lines += letter == '\n' ? std::string("\r\n") : std::string(1, letter);
    return lines;
}
