#pragma once

// Popups in the theme's look. Main thread only, inside a frame.

// Use these instead of ImGui::BeginPopup and ImGui::BeginPopupModal. They set the theme's spacing, whatever the screen
// has pushed, and fade the popup in. If they return true, end the popup with uiThemeEndPopup.
[[nodiscard]] bool uiThemeBeginMenu(const char* name);
[[nodiscard]] bool uiThemeBeginModal(const char* name); // sized to its content; the name is its title
void uiThemeEndPopup();

// An entry of a menu. True on the frame in which it is chosen.
[[nodiscard]] bool uiThemeMenuItem(const char* label, bool enabled = true);

// The button of a modal popup that Enter presses, in the primary colours. True on the frame of a click.
[[nodiscard]] bool uiThemeDefaultButton(const char* label, float width);
