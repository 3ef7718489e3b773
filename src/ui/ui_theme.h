#pragma once

// Defines the look of the launcher: colours, metrics, fonts and shapes. ui_palette.h has the values. Main thread only,
// inside a frame of the current Dear ImGui context unless stated otherwise.
//
// Colours are in Dear ImGui's packed order (alpha in the top byte, then blue, green, red). Positions, sizes and radii
// are in scaled pixels. "Units" are unscaled pixels; uiThemePx scales them. Font sizes are unscaled; uiThemeFont scales
// them.

#include <cstdint>
#include <string_view>

#include <imgui.h>

struct UiIntegration;

// --- set-up, and calls of each frame ---------------------------------------------------------------------------------

void uiThemeInitialize(UiIntegration* integration); // call before the first frame; loads the font
void uiThemeShutdown();                             // call before the context is destroyed
void uiThemeSetScale(float scale);                  // takes effect at once; resizes the fonts
void uiThemeTick(float deltaSeconds);               // advances the clock of uiThemeReveal
void uiThemeApplyStyle();                           // sets the style of Dear ImGui's own widgets

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

// Converts units to pixels at the current scale. A whole number of units becomes a whole number of pixels at any scale,
// so that edges stay sharp.
[[nodiscard]] float uiThemePx(float units);
[[nodiscard]] ImVec2 uiThemePx(ImVec2 units);
[[nodiscard]] ImVec2 uiThemeWholePixels(ImVec2 point); // rounds both coordinates
[[nodiscard]] float uiThemeWindowRounding();           // 0, because the system draws the window's frame

// Returns a font whose own size (LegacySize) is `nominalSize` at the current scale, not rounded. Valid until the next
// frame begins.
[[nodiscard]] ImFont* uiThemeFont(float nominalSize);
[[nodiscard]] float uiThemeFontSize(ImFont* font); // LegacySize, in pixels

// Returns the top position of a line of text that is centred between `top` and `bottom`, in pixels. Corrects the
// rounding of Dear ImGui, which could otherwise move the baseline by a pixel, depending on the text's size.
[[nodiscard]] float uiThemeTextTop(ImFont* font, float top, float bottom);

// Returns the size of a text in the font's own size. If `wrapWidth` is above 0, the text is wrapped with wrapText.
[[nodiscard]] ImVec2 uiThemeTextSize(ImFont* font, std::string_view text, float wrapWidth = 0.0f);

// --- shapes ----------------------------------------------------------------------------------------------------------

void uiThemeRoundedPanel(ImDrawList* drawList, ImVec2 min, ImVec2 max, ImU32 colour, float radius);
void uiThemeBorder(ImDrawList* drawList, ImVec2 min, ImVec2 max, float radius, float thickness, ImU32 colour);

void uiThemeText(ImDrawList* drawList, ImFont* font, ImVec2 position, ImU32 colour, std::string_view text);

// Draws a text with additional space after each character. `tracking` is that space in units; it may be negative.
void uiThemeTextTracked(ImDrawList* drawList, ImFont* font, ImVec2 position, ImU32 colour, std::string_view text,
                        float tracking);

// Draws a wrapped text with additional space between its lines. `lineGap` is that space in pixels. uiThemeTextSize does
// not include it.
void uiThemeTextWrapped(ImDrawList* drawList, ImFont* font, ImVec2 position, ImU32 colour, std::string_view text,
                        float wrapWidth, float lineGap);

void uiThemeSpinner(ImDrawList* drawList, ImVec2 centre, float radius, float timeSeconds, ImU32 colour);

enum class UiThemeBadgeStatus : std::int32_t { Neutral = 0, Success = 1, Failure = 2, Working = 3 };

// Draws a pill with a text. `position` is its top left corner. The pill is a Dear ImGui item, so that tests find it by
// its identifier.
void uiThemeBadge(const char* identifier, ImDrawList* drawList, ImVec2 position, std::string_view text,
                  UiThemeBadgeStatus status);
[[nodiscard]] float uiThemeBadgeWidth(std::string_view text);

void uiThemeFade(ImDrawList* drawList, float opacity); // multiplies the opacity of everything in the list

// Draws the short fade-in at the start of the program, over the root window and its children. Does nothing after the
// fade-in has ended.
void uiThemeReveal(ImDrawList* drawList, ImVec2 min, ImVec2 max);
