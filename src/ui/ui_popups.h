#pragma once

// Popups in the theme's look. Main thread only, inside a frame.

#include <string_view>

#include <imgui.h>

struct ImRect;

// Use these instead of ImGui::BeginPopup and ImGui::BeginPopupModal. They set the theme's spacing, whatever the screen
// has pushed, and fade the popup in. A modal popup stays inside the window when that shrinks. If they return true, end
// the popup with uiThemeEndPopup.
[[nodiscard]] bool uiThemeBeginMenu(const char* name);
[[nodiscard]] bool uiThemeBeginModal(const char* name); // sized to its content; the name is its title
void uiThemeEndPopup();

// A text of a popup, wrapped to `width` pixels, with some space between the lines.
void uiThemeParagraph(std::string_view text, ImU32 colour, float width);

// A tooltip for an item of the current window, once the pointer has rested on it for a moment.
void uiThemeTooltip(ImGuiID item, const ImRect& rectangle, std::string_view text);

// True while the pointer rests on an item whose tooltip comes in a moment: a frame must follow without an event.
[[nodiscard]] bool uiThemeTooltipWaits();

// A line over the foot of the window, above everything else. It takes no input.
void uiThemeFootLine(std::string_view text);

// An entry of a menu. True on the frame in which it is chosen.
[[nodiscard]] bool uiThemeMenuItem(const char* label, bool enabled = true);

// The button of a modal popup that Enter presses, in the primary colours. True on the frame of a click.
[[nodiscard]] bool uiThemeDefaultButton(const char* label, float width);
