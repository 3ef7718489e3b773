#pragma once

// Draws popups in the theme's look. Main thread only, inside a frame.

#include <string_view>

#include <imgui.h>

struct ImRect;

// Use these functions instead of ImGui::BeginPopup and ImGui::BeginPopupModal. They set the theme's spacing and fade
// the popup in. A modal popup stays inside the window when the window becomes smaller. If the result is true, end the
// popup with uiThemeEndPopup.
[[nodiscard]] bool uiThemeBeginMenu(const char* name);
[[nodiscard]] bool uiThemeBeginModal(const char* name); // has the size of its content; `name` is its title
void uiThemeEndPopup();

// Draws a text in a popup, wrapped to `width` pixels, with space between the lines.
void uiThemeParagraph(std::string_view text, ImU32 colour, float width);

// Shows a tooltip for an item of the current window after the pointer has been on it for half a second.
void uiThemeTooltip(ImGuiID item, const ImRect& rectangle, std::string_view text);

// True if the pointer is on an item whose tooltip is not shown yet. In that case a frame must follow even if no event
// arrives.
[[nodiscard]] bool uiThemeTooltipWaits();

// Draws a line of text at the bottom of the window, above everything else. It reacts to no input.
void uiThemeFootLine(std::string_view text);

// Draws an entry of a menu. True in the frame in which the user chooses it.
[[nodiscard]] bool uiThemeMenuItem(const char* label, bool enabled = true);

// Draws the default button of a modal popup in the primary colours. True in the frame of a click.
[[nodiscard]] bool uiThemeDefaultButton(const char* label, float width);
