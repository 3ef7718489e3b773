#pragma once

// Contains texts for the user that are the same on every platform.

#include <string>

inline constexpr char kProjectFilterText[] = "VOLO Project (*.zantorproj)";
inline constexpr char kProjectFilterPattern[] = "*.zantorproj";
inline constexpr char kNoDialogText[] =
    "The file dialog could not be opened. Install xdg-desktop-portal, zenity or kdialog.";
inline constexpr char kNoExecutableText[] = "No executable was provided.";

[[nodiscard]] inline std::string startFailureText(long long errorNumber) {
    return "Starting the editor process failed (error " + std::to_string(errorNumber) + ").";
}
