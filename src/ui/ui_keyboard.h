#pragma once

// Extends Dear ImGui's keyboard handling. Does not change what the mouse does. Main thread only; inside a frame, except
// uiThemeNewFrame.

#include <imgui.h>

// Call it instead of ImGui::NewFrame. A remote desktop or a dictation program may press and release a shortcut at once.
// Dear ImGui 1.92 then processes the release of the modifier in the same frame as the press of the other key, so the
// shortcut has no modifier. This function keeps the release for the next frame.
void uiThemeNewFrame();

// True if the item has the keyboard focus and the user navigates by keyboard.
[[nodiscard]] bool uiThemeFocusShows(ImGuiID item);

// Draws the focus ring around a rectangle in pixels. `distance` is in unscaled pixels. A negative `distance` puts the
// ring inside the rectangle, for items that fill a clipped region.
void uiThemeFocusRing(ImDrawList* drawList, ImVec2 min, ImVec2 max, float radius, float distance = 2.0f);

// Draws the focus ring around the last item if uiThemeFocusShows is true for it. Returns true if it has drawn the ring.
// Use it for Dear ImGui's own widgets.
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
