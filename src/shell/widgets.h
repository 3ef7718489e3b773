#pragma once

// The small widgets that the screens share, drawn at absolute screen positions. They keep no state. They register with
// Dear ImGui only for hit testing and navigation. Positions and sizes are pixels, already scaled; font sizes are
// nominal. Main thread only, inside a frame.

#include <string>

#include <imgui.h>

// Labels that several screens show.
inline constexpr char kCancelLabel[] = "Cancel";
inline constexpr char kRetryLabel[] = "Retry";

// True on the frame of a click. The label is both text and identifier.
[[nodiscard]] bool drawPrimaryButton(const char* label, ImVec2 position, ImVec2 size, float fontSize);
[[nodiscard]] bool drawSecondaryButton(const char* label, ImVec2 position, ImVec2 size, float fontSize);

// A fraction of at most 0.001 shows an empty track, a small one shows a dot, one above 1 shows a full bar.
void drawProgressBar(ImDrawList* drawList, ImVec2 min, ImVec2 max, float fraction);

void drawStarIcon(ImDrawList* drawList, ImVec2 centre, float radius, ImU32 colour, bool filled);
void drawFolderIcon(ImDrawList* drawList, ImVec2 topLeft, float size, ImU32 colour);
void drawEditorIcon(ImDrawList* drawList, ImVec2 topLeft, float size, ImU32 colour);

// Fills the content area right of the sidebar and draws the screen's title. Returns the area's top left corner.
ImVec2 drawContentArea(const char* title);

// Copies a text that is on screen while Ctrl+C is pressed. Text fields and open popups use the keys themselves.
void copyOnCtrlC(const std::string& text);

// A clickable rectangle that draws nothing. Every custom control of the launcher is built on it.
struct HitArea {
    bool added = false; // false: clipped, so draw nothing
    bool clicked = false;
    bool hovered = false;
    bool held = false;
    bool focused = false; // draw the focus ring
};
[[nodiscard]] HitArea hitArea(ImGuiID id, ImVec2 min, ImVec2 max);
