#pragma once

// What the screens of the signed-in shell agree on. Units at scale 1.

inline constexpr char kProjectsTitle[] = "Projects"; // in the sidebar and over the screen
inline constexpr char kInstallsTitle[] = "Installs";

inline constexpr float kSidebarWidth = 210.0f;
inline constexpr float kContentInset = 24.0f; // from the sidebar, and from the window's right edge
inline constexpr float kContentTop = 16.0f;
