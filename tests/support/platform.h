#pragma once

// Differences between the platforms, so that the tests can use the same expectations for the rest.

#include <string>

#ifdef _WIN32
inline constexpr bool kOnWindows = true;
inline constexpr char kPlatformName[] = "windows";
#else
inline constexpr bool kOnWindows = false;
inline constexpr char kPlatformName[] = "linux";
#endif

// Returns the bytes of a text after it was written in text mode.
inline std::string asTextFile(const std::string& text) {
    if (!kOnWindows) return text;
    std::string lines;
    for (const char letter : text)
        lines += letter == '\n' ? std::string("\r\n") : std::string(1, letter);
    return lines;
}
