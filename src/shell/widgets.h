#pragma once

// The small widgets that the screens share, drawn at absolute screen positions. They keep no state and register with
// Dear ImGui for hit testing and navigation only. Positions and sizes are pixels, already scaled; font sizes are
// nominal. Main thread, inside a frame.

#include <imgui.h>

// Labels that several screens show.
inline constexpr char kCancelLabel[] = "Cancel";
inline constexpr char kRetryLabel[] = "Retry";

// True on the frame of a click. The label is both text and identifier.
bool drawPrimaryButton(const char* label, ImVec2 position, ImVec2 size, float fontSize);
bool drawSecondaryButton(const char* label, ImVec2 position, ImVec2 size, float fontSize);

// A fraction up to 0.001 leaves the track empty; a small one shows as a dot; above 1 the bar is full.
void drawProgressBar(ImDrawList* drawList, ImVec2 min, ImVec2 max, float fraction);

void drawStarIcon(ImDrawList* drawList, ImVec2 centre, float radius, ImU32 colour, bool filled);
void drawFolderIcon(ImDrawList* drawList, ImVec2 topLeft, float size, ImU32 colour);
void drawEditorIcon(ImDrawList* drawList, ImVec2 topLeft, float size, ImU32 colour);

// A clickable area that draws nothing: what every custom control above and in the screens is made of.
struct HitArea {
    bool added = false; // false: clipped away, draw nothing
    bool clicked = false;
    bool hovered = false;
    bool held = false;
    bool focused = false; // shows that the keyboard is on it
};
HitArea hitArea(ImGuiID id, ImVec2 min, ImVec2 max);
