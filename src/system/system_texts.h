#pragma once

// What the user reads of the operating system's side, the same on every platform.

#include <string>

inline constexpr char kProjectFilterText[] = "VOLO Project (*.zantorproj)";
inline constexpr char kProjectFilterPattern[] = "*.zantorproj";
inline constexpr char kNoExecutableText[] = "No executable was provided.";

inline std::string startFailureText(long long errorNumber) {
    return "Starting the editor process failed (error " + std::to_string(errorNumber) + ").";
}
