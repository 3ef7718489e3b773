#pragma once

// Additions to Dear ImGui's keyboard handling. None of them changes what the mouse does. Main thread only; inside a
// frame, except uiThemeNewFrame.

#include <imgui.h>

// Call instead of ImGui::NewFrame. Dear ImGui 1.92 puts the release of a modifier into the frame in which another key
// is pressed. A shortcut that a remote desktop or a dictation program presses and releases at once would lose its
// modifier. This function keeps such a release for the next frame.
void uiThemeNewFrame();

// True if the item has the keyboard focus and the user navigates by keyboard.
[[nodiscard]] bool uiThemeFocusShows(ImGuiID item);

// Draws the focus ring around a rectangle in pixels. `distance` is in unscaled pixels. A negative `distance` puts the
// ring inside the rectangle, for items that fill a clipped region.
void uiThemeFocusRing(ImDrawList* drawList, ImVec2 min, ImVec2 max, float radius, float distance = 2.0f);

// Draws the ring around the last item if the item has the focus. True if it was drawn. For Dear ImGui's own widgets.
bool uiThemeFocusRingOfItem();

// Call it before ImGui::BeginChild. Tab and the arrow keys then also move between the child's items and the items of
// its parent window.
void uiThemeJoinNavigation();

// Call it after the items of the current window and its children. If the focused item no longer exists, the next Tab
// then moves to the first item. Without this call, Tab does nothing in Dear ImGui 1.92, which searches from the focused
// item.
void uiThemeRecoverKeyboard();

// True if the user pressed the menu key or Shift+F10.
[[nodiscard]] bool uiThemeMenuKeyPressed();

// True if the user pressed Enter (confirm) or Escape (cancel) in the current popup. The key press that opened the popup
// does not count.
[[nodiscard]] bool uiThemeConfirmKeyPressed();
[[nodiscard]] bool uiThemeCancelKeyPressed();
