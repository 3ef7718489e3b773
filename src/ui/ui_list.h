#pragma once

// A scrolled list of rows. Its scroll bar takes no width from the rows: it is drawn to the right of them, in space of
// the window around. Tab and the arrow keys move between the rows and the items of that window. Main thread only,
// inside a frame.

#include <imgui.h>

// Rows follow each other without a gap. `position` and `size` are pixels. End the list with uiThemeEndList.
void uiThemeBeginList(const char* name, ImVec2 position, ImVec2 size);
void uiThemeEndList();
