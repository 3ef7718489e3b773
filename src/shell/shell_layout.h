#pragma once

// Defines titles and metrics that the screens of the signed-in shell share. Metrics are unscaled pixels.

inline constexpr char kProjectsTitle[] = "Projects"; // shown in the sidebar and on the screen
inline constexpr char kInstallsTitle[] = "Installs";

inline constexpr float kSidebarWidth = 210.0f;
inline constexpr float kContentInset = 24.0f; // from the sidebar and from the window's right edge
inline constexpr float kContentTop = 16.0f;
inline constexpr float kTitleLineHeight = 48.0f; // distance from kContentTop to the content below the title
