#pragma once

// Draws a list of rows that scrolls. The scroll bar does not make the rows narrower: it is drawn to the right of the
// list, in the parent window. Tab and the arrow keys can move the focus from the rows to the items of the parent window
// and back. Main thread only, inside a frame.

#include <imgui.h>

// Begins a list whose rows have no gap between them. `position` and `size` are in pixels. End it with uiThemeEndList.
void uiThemeBeginList(const char* name, ImVec2 position, ImVec2 size);
void uiThemeEndList();
