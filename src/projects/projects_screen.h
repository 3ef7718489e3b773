#pragma once

// What the two sources of the Projects screen share: its rectangles, worked out once per frame, and the records that
// pass between the table and its rows. Frame thread.

#include <cstdint>
#include <string>
#include <vector>

#include <imgui.h>

#include "shell/launcher_app.h"

// Pixels.
struct LauncherApp::ProjectsLayout {
    ImVec2 contentMin, contentMax; // right of the sidebar
    ImVec2 title;
    ImVec2 searchMin, searchMax;
    ImVec2 addButton, addButtonSize;
    ImVec2 newButton, newButtonSize;
    float noticeTop; // of the notice band, or of the table header when there is no notice
};

struct LauncherApp::TableHeader {
    ImFont* font;
    float top, height, textTop;
};

// The rows of one frame, in the order in which they are shown.
struct LauncherApp::ProjectRows {
    std::vector<std::int32_t> indices; // into the stored list
    std::string editorLabel;           // of every entry without a version of its own
};

// What a row asks for that would change the list while its rows are being drawn. Done after the last row.
struct LauncherApp::RowRequest {
    std::int32_t openIndex = -1;
    std::int32_t removeIndex = -1;
};

inline constexpr char kNewProjectLabel[] = "+ New project";

// Where the columns stand, as parts of the table's inner width.
inline constexpr float kPlatformColumn = 0.58f;
inline constexpr float kEditorColumn = 0.76f;
inline constexpr float kStarColumn = 22.0f;
inline constexpr float kNameColumn = 54.0f;
inline constexpr float kTableInset = 16.0f;
inline constexpr float kStarHit = 12.0f;
inline constexpr float kStarRadius = 6.5f;
inline constexpr ImU32 kStarOn = 0xFF24BFFB;
