#pragma once

// What the two sources of the Projects screen share: the layout of a frame and the records that the table and its rows
// exchange. Main thread only.

#include <cstdint>
#include <string>
#include <vector>

#include <imgui.h>

#include "shell/launcher_app.h"

// Pixels.
struct LauncherApp::ProjectsLayout {
    ImVec2 contentMin, contentMax; // right of the sidebar
    ImVec2 searchMin, searchMax;
    ImVec2 addButton, addButtonSize;
    ImVec2 newButton, newButtonSize;
    float noticeTop; // top of the notice, or of the table header without a notice
};

struct LauncherApp::TableHeader {
    ImFont* font;
    float top, height, textTop;
};

// The rows of one frame, in the order in which they are shown.
struct LauncherApp::ProjectRows {
    std::vector<std::int32_t> indices; // into the stored list
    std::string editorLabel;           // for entries without a version of their own
    bool openFirst = false;            // the user pressed Enter in the search field
    std::int32_t focusIndex = -1;      // the row that gets the keyboard focus in this frame; -1: none
};

// What the rows of a frame report. Requests that change the list are carried out after the last row, so that indices
// stay valid. -1: none.
struct LauncherApp::RowRequest {
    std::int32_t openIndex = -1;
    std::int32_t removeIndex = -1;
    std::int32_t focusedIndex = -1; // the row whose background, star or dots have the keyboard focus
};

inline constexpr char kNewProjectLabel[] = "+ New project";

// The columns, as shares of the table's inner width or in units from its left edge.
inline constexpr float kPlatformColumn = 0.58f;
inline constexpr float kEditorColumn = 0.76f;
inline constexpr float kStarColumn = 22.0f;
inline constexpr float kNameColumn = 54.0f;
inline constexpr float kTableInset = 16.0f;
inline constexpr float kStarHit = 12.0f;
inline constexpr float kStarRadius = 6.5f;
inline constexpr ImU32 kAmber = 0xFF24BFFB; // favorites and notices
