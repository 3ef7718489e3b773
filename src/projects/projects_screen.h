#pragma once

// Declares records and constants that the sources of the Projects screen share. Main thread only.

#include <cstdint>
#include <string>
#include <vector>

#include <imgui.h>

#include "shell/launcher_app.h"

// The rectangles of one frame, in pixels.
struct LauncherApp::ProjectsLayout {
    ImVec2 contentMin, contentMax; // right of the sidebar
    ImVec2 searchMin, searchMax;
    ImVec2 addButton, addButtonSize;
    ImVec2 newButton, newButtonSize;
    float noticeTop; // top of the notice; if there is no notice, top of the table header
};

struct LauncherApp::TableHeader {
    ImFont* font;
    float top, height, textTop;
};

// The rows of one frame, in display order.
struct LauncherApp::ProjectRows {
    std::vector<std::int32_t> indices; // into the stored list
    std::string editorLabel;           // shown for entries without a version
    bool openFirst = false;            // the user pressed Enter in the search field
    std::int32_t focusIndex = -1;      // the row that gets the keyboard focus in this frame; -1: none
};

// What the user requested on the rows in this frame, as list indices; -1: none. The list changes only after the last
// row is drawn, so that the indices stay valid.
struct LauncherApp::RowRequest {
    std::int32_t openIndex = -1;
    std::int32_t removeIndex = -1;
    std::int32_t focusedIndex = -1; // the row with the keyboard focus on itself, its star or its dots
};

inline constexpr char kNewProjectLabel[] = "+ New project";

// Positions and sizes in the table. Values below 1 are fractions of the table's inner width, all others are unscaled
// pixels.
inline constexpr float kPlatformColumn = 0.58f;
inline constexpr float kEditorColumn = 0.76f;
inline constexpr float kStarColumn = 22.0f;
inline constexpr float kNameColumn = 54.0f;
inline constexpr float kTableInset = 16.0f;
inline constexpr float kStarHit = 12.0f;
inline constexpr float kStarRadius = 6.5f;
inline constexpr ImU32 kAmber = 0xFF24BFFB; // favorites and notices
