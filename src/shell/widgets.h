#pragma once

// Draws small widgets that the screens share. They are drawn at absolute screen positions and have no state. They
// register with Dear ImGui only for hit testing and keyboard navigation. Positions and sizes are scaled pixels; font
// sizes are not scaled. Main thread only, inside a frame.

#include <string>

#include <imgui.h>

inline constexpr char kCancelLabel[] = "Cancel";
inline constexpr char kRetryLabel[] = "Retry";

// Draw a button. Return true in the frame of a click. The label is also the identifier.
[[nodiscard]] bool drawPrimaryButton(const char* label, ImVec2 position, ImVec2 size, float fontSize);
[[nodiscard]] bool drawSecondaryButton(const char* label, ImVec2 position, ImVec2 size, float fontSize);

// Draws a bar for a fraction from 0 to 1. Up to 0.001 the bar is empty; above 1 it is full. A small fraction is drawn
// as a dot.
void drawProgressBar(ImDrawList* drawList, ImVec2 min, ImVec2 max, float fraction);

void drawStarIcon(ImDrawList* drawList, ImVec2 centre, float radius, ImU32 colour, bool filled);
void drawFolderIcon(ImDrawList* drawList, ImVec2 topLeft, float size, ImU32 colour);
void drawEditorIcon(ImDrawList* drawList, ImVec2 topLeft, float size, ImU32 colour);

// Fills the content area right of the sidebar and draws the screen's title. Returns the area's top left corner.
ImVec2 drawContentArea(const char* title);

// Copies a text to the clipboard if the user presses Ctrl+C, unless a text field or an open popup uses these keys.
void copyOnCtrlC(const std::string& text);

// The state of a clickable rectangle in this frame. The launcher's own controls use it.
struct HitArea {
    bool added = false; // false: the rectangle is clipped, so draw nothing
    bool clicked = false;
    bool hovered = false;
    bool held = false;
    bool focused = false; // true: draw the focus ring
};

// Adds a clickable rectangle to the window. Draws nothing.
[[nodiscard]] HitArea hitArea(ImGuiID id, ImVec2 min, ImVec2 max);
