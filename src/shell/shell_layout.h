#pragma once

// What the screens of the signed-in shell share. Units at scale 1.

inline constexpr char kProjectsTitle[] = "Projects"; // in the sidebar and on the screen
inline constexpr char kInstallsTitle[] = "Installs";

inline constexpr float kSidebarWidth = 210.0f;
inline constexpr float kContentInset = 24.0f; // from the sidebar and from the window's right edge
inline constexpr float kContentTop = 16.0f;
inline constexpr float kTitleLineHeight = 48.0f; // from the content's top to what is below the title line
