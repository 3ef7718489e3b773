#pragma once

// The look of the launcher: colours, metrics, type and the shapes that are drawn with them. Main thread only, inside a
// frame of the current Dear ImGui context unless stated.
//
// Colours are in Dear ImGui's packed order (alpha in the top byte, then blue, green, red). Positions, sizes and radii
// are pixels; callers scale units with uiThemePx. Font sizes are nominal; uiThemeFont scales them.

#include <cstdint>
#include <string_view>

#include <imgui.h>

struct UiIntegration;

// --- once, and once per frame ----------------------------------------------------------------------------------------

void uiThemeInitialize(UiIntegration* integration); // before the first frame; reads the font path
void uiThemeShutdown();                             // before the context is destroyed
void uiThemeSetScale(float scale);                  // a change takes effect at once, fonts included
void uiThemeTick(float deltaSeconds);               // advances the clock of the reveal at start-up
void uiThemeApplyStyle();                           // gives Dear ImGui's own widgets the theme's look

// --- colours ---------------------------------------------------------------------------------------------------------

[[nodiscard]] ImU32 uiThemeBackground();
[[nodiscard]] ImU32 uiThemeCard();
[[nodiscard]] ImU32 uiThemeBorder();
[[nodiscard]] ImU32 uiThemeBorderStrong();
[[nodiscard]] ImU32 uiThemeForeground();
[[nodiscard]] ImU32 uiThemeMutedForeground();
[[nodiscard]] ImU32 uiThemeDestructive();
void uiThemeBackgroundFloat(float* colour); // red, green, blue, alpha

// --- metrics and type ------------------------------------------------------------------------------------------------

// Units to pixels at the current scale. A whole number of units gives a whole number of pixels at every scale, so that
// edges stay sharp.
[[nodiscard]] float uiThemePx(float units);
[[nodiscard]] ImVec2 uiThemePx(ImVec2 units);
[[nodiscard]] ImVec2 uiThemeWholePixels(ImVec2 point); // for centred shapes and shares of the window
[[nodiscard]] float uiThemeWindowRounding();           // 0, because the system draws the window's frame

// A font whose own size (LegacySize) is nominalSize at the current scale, not rounded. Valid until the next frame
// begins.
[[nodiscard]] ImFont* uiThemeFont(float nominalSize);
[[nodiscard]] float uiThemeFontSize(ImFont* font); // LegacySize, in pixels

// Where to draw a line of text so that it is centred between `top` and `bottom` in pixels. Texts of different sizes get
// the same baseline, which rounding would otherwise move by a pixel.
[[nodiscard]] float uiThemeTextTop(ImFont* font, float top, float bottom);

// The size of a text in the font's own size. A wrapWidth above 0 wraps it as ui_text.h tells.
[[nodiscard]] ImVec2 uiThemeTextSize(ImFont* font, std::string_view text, float wrapWidth = 0.0f);

// --- shapes ----------------------------------------------------------------------------------------------------------

void uiThemeRoundedPanel(ImDrawList* drawList, ImVec2 min, ImVec2 max, ImU32 colour, float radius);
void uiThemeBorder(ImDrawList* drawList, ImVec2 min, ImVec2 max, float radius, float thickness, ImU32 colour);

void uiThemeText(ImDrawList* drawList, ImFont* font, ImVec2 position, ImU32 colour, std::string_view text);
// `tracking`, in units, is added after every character.
void uiThemeTextTracked(ImDrawList* drawList, ImFont* font, ImVec2 position, ImU32 colour, std::string_view text,
                        float tracking);
// `lineGap`, in pixels, is added between lines. uiThemeTextSize does not include it.
void uiThemeTextWrapped(ImDrawList* drawList, ImFont* font, ImVec2 position, ImU32 colour, std::string_view text,
                        float wrapWidth, float lineGap);

void uiThemeSpinner(ImDrawList* drawList, ImVec2 centre, float radius, float timeSeconds, ImU32 colour);

enum class UiThemeBadgeStatus : std::int32_t { Neutral = 0, Success = 1, Failure = 2, Working = 3 };

// A pill with a text. `position` is its top left corner. It is an item, so that tests find it by its identifier.
void uiThemeBadge(const char* identifier, ImDrawList* drawList, ImVec2 position, std::string_view text,
                  UiThemeBadgeStatus status);
[[nodiscard]] float uiThemeBadgeWidth(std::string_view text);

void uiThemeFade(ImDrawList* drawList, float opacity); // multiplies the opacity of everything drawn so far

// The short fade-in at the start of the program, over everything that the root window and its children have drawn.
// Draws nothing once it has ended.
void uiThemeReveal(ImDrawList* drawList, ImVec2 min, ImVec2 max);
