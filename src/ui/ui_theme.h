#pragma once

// The look of the launcher: colours, metrics, type and the shapes that are drawn with them. Main thread only, inside a
// frame of the current Dear ImGui context unless stated.
//
// Colours are in Dear ImGui's packed order (alpha in the top byte, then blue, green, red). Positions, sizes and radii
// are pixels: whoever computes a rectangle scales it with uiThemePx. Font sizes are nominal; uiThemeFont scales them.

#include <cstdint>
#include <string_view>

#include <imgui.h>

struct UiIntegration;

// --- once, and once per frame ----------------------------------------------------------------------------------------

void uiThemeInitialize(UiIntegration* integration); // before the first frame; the record is borrowed
void uiThemeShutdown();                             // before the context goes; forgets fonts and clock
void uiThemeSetScale(float scale);                  // a change takes effect at once, fonts included
void uiThemeTick(float deltaSeconds);               // the clock of whatever moves
void uiThemeApplyStyle();                           // Dear ImGui's own widgets in the theme's colours and metrics

// --- colours ---------------------------------------------------------------------------------------------------------

ImU32 uiThemeBackground();
ImU32 uiThemeCard();
ImU32 uiThemeBorder();
ImU32 uiThemeBorderStrong();
ImU32 uiThemeForeground();
ImU32 uiThemeMutedForeground();
ImU32 uiThemeDestructive();
void uiThemeBackgroundFloat(float* colour); // red, green, blue, alpha

// --- metrics and type ------------------------------------------------------------------------------------------------

// At the current scale. A whole number of units is a whole number of pixels at every scale, so that edges stay sharp.
float uiThemePx(float units);
ImVec2 uiThemeWholePixels(ImVec2 point); // for what is centred, or a share of the window
float uiThemeWindowRounding();           // 0 while the system draws the window's frame

// A font whose own size (LegacySize) is nominalSize at the current scale, not rounded. Valid until the next frame
// begins.
ImFont* uiThemeFont(float nominalSize);
float uiThemeFontSize(ImFont* font); // its own size in pixels

// The size of a text in a font's own size. A wrapWidth above 0 wraps at words.
ImVec2 uiThemeTextSize(ImFont* font, std::string_view text, float wrapWidth = 0.0f);

// --- shapes ----------------------------------------------------------------------------------------------------------

void uiThemeRoundedPanel(ImDrawList* drawList, ImVec2 min, ImVec2 max, ImU32 colour, float radius);
void uiThemeBorder(ImDrawList* drawList, ImVec2 min, ImVec2 max, float radius, float thickness, ImU32 colour);

void uiThemeText(ImDrawList* drawList, ImFont* font, ImVec2 position, ImU32 colour, std::string_view text);
// `tracking` is added after every character, in units that the current scale applies to.
void uiThemeTextTracked(ImDrawList* drawList, ImFont* font, ImVec2 position, ImU32 colour, std::string_view text,
                        float tracking);
// `lineGap`, in pixels, is added between lines; uiThemeTextSize does not know of it.
void uiThemeTextWrapped(ImDrawList* drawList, ImFont* font, ImVec2 position, ImU32 colour, std::string_view text,
                        float wrapWidth, float lineGap);

void uiThemeSpinner(ImDrawList* drawList, ImVec2 centre, float radius, float timeSeconds, ImU32 colour);

enum class UiThemeBadgeStatus : std::int32_t { Neutral = 0, Success = 1, Failure = 2, Working = 3 };

// A small pill with a text; `position` is its top left corner. The identifier makes it an item that can be found.
void uiThemeBadge(const char* identifier, ImDrawList* drawList, ImVec2 position, std::string_view text,
                  UiThemeBadgeStatus status);
float uiThemeBadgeWidth(std::string_view text);

void uiThemeFade(ImDrawList* drawList, float opacity); // what it holds so far, in a part of its opacity

// The short fade at the start of the program, over everything that the root window and its children have drawn. Draws
// nothing afterwards.
void uiThemeReveal(ImDrawList* drawList, ImVec2 min, ImVec2 max);
