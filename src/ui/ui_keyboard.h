#pragma once

// What the keyboard needs beside Dear ImGui's own navigation. Nothing in here changes what the mouse does. Main thread
// only, inside a frame.

#include <imgui.h>

// True while the user moves by keyboard and stands on the item.
[[nodiscard]] bool uiThemeFocusShows(ImGuiID item);

// The mark of where the keyboard stands, just outside of a rectangle in pixels. A negative `distance`, in units, puts
// it inside, for what fills a region that clips.
void uiThemeFocusRing(ImDrawList* drawList, ImVec2 min, ImVec2 max, float radius, float distance = 2.0f);

// The same around the last item, for Dear ImGui's own widgets. True when it shows.
bool uiThemeFocusRingOfItem();

// Before ImGui::BeginChild: Tab and the arrows pass in and out of the child as if its items stood in the window around
// it.
void uiThemeJoinNavigation();

// After the items of the current window and of its children: when the one that the keyboard stood on is gone, Tab
// begins with the first. It would lead nowhere, for it starts from where the keyboard stands.
void uiThemeRecoverKeyboard();

// The menu key, or Shift and F10.
[[nodiscard]] bool uiThemeMenuKeyPressed();

// In a modal popup. The press that opened it does not count.
[[nodiscard]] bool uiThemeConfirmKeyPressed();
[[nodiscard]] bool uiThemeCancelKeyPressed();
