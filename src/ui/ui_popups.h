#pragma once

// Popups in the theme's look. Main thread only, inside a frame.

// In the place of ImGui::BeginPopup and ImGui::BeginPopupModal: the theme's own spacing holds in them, whatever the
// screen has pushed, and one that has just been opened comes up in a short fade. True: end it with uiThemeEndPopup.
[[nodiscard]] bool uiThemeBeginMenu(const char* name);
[[nodiscard]] bool uiThemeBeginModal(const char* name); // as large as what it holds; the name is its title
void uiThemeEndPopup();

// In a menu. True on the frame of a choice.
[[nodiscard]] bool uiThemeMenuItem(const char* label, bool enabled = true);

// A button of a popup, the one that its Enter key presses. True on the frame of a click.
[[nodiscard]] bool uiThemeDefaultButton(const char* label, float width);
