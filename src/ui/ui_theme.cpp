#include "ui/ui_theme.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include <imgui_internal.h>

#include "ui/ui_fonts.h"
#include "ui/ui_integration.h"
#include "ui/ui_palette.h"
#include "ui/ui_text.h"

namespace {

constexpr float kPi = 3.14159265f;
constexpr int kPillSegments = 16; // lines that approximate a half circle

struct Theme {
    float scale = 1.0f;
    bool ticked = false;
    float seconds = 0.0f; // since the first tick
};
Theme theme;

// Sets all colours of Dear ImGui's own widgets, so that no default colour is visible.
constexpr std::pair<ImGuiCol, ImU32> kStyleColours[] = {
    {ImGuiCol_Text, palette::kForeground},
    {ImGuiCol_TextDisabled, palette::kMuted},
    {ImGuiCol_TextLink, palette::kPrimaryLight},
    {ImGuiCol_TextSelectedBg, palette::kSelection},
    {ImGuiCol_InputTextCursor, palette::kCaret},
    {ImGuiCol_WindowBg, palette::kCard},
    {ImGuiCol_ChildBg, palette::kNone},
    {ImGuiCol_PopupBg, palette::kPopup},
    {ImGuiCol_MenuBarBg, palette::kPopup},
    {ImGuiCol_TitleBg, palette::kPopup},
    {ImGuiCol_TitleBgActive, palette::kPopup},
    {ImGuiCol_TitleBgCollapsed, palette::kPopup},
    {ImGuiCol_ModalWindowDimBg, palette::kDim},
    {ImGuiCol_NavWindowingDimBg, palette::kDim},
    {ImGuiCol_Border, palette::kBorderStrong},
    {ImGuiCol_BorderShadow, palette::kNone},
    {ImGuiCol_Separator, palette::kBorderStrong},
    {ImGuiCol_SeparatorHovered, palette::kGrabHovered},
    {ImGuiCol_SeparatorActive, palette::kGrabHeld},
    {ImGuiCol_TableBorderStrong, palette::kBorderStrong},
    {ImGuiCol_TableBorderLight, palette::kBorder},
    {ImGuiCol_TreeLines, palette::kBorderStrong},
    {ImGuiCol_FrameBg, palette::kWell},
    {ImGuiCol_FrameBgHovered, palette::kWellHovered},
    {ImGuiCol_FrameBgActive, palette::kWellHovered},
    {ImGuiCol_Button, palette::kControl},
    {ImGuiCol_ButtonHovered, palette::kControlHovered},
    {ImGuiCol_ButtonActive, palette::kControlHeld},
    {ImGuiCol_Header, palette::kControl},
    {ImGuiCol_HeaderHovered, palette::kControlHovered},
    {ImGuiCol_HeaderActive, palette::kControlHeld},
    {ImGuiCol_Tab, palette::kPopup},
    {ImGuiCol_TabHovered, palette::kControlHovered},
    {ImGuiCol_TabSelected, palette::kControl},
    {ImGuiCol_TabSelectedOverline, palette::kPrimary},
    {ImGuiCol_TabDimmed, palette::kPopup},
    {ImGuiCol_TabDimmedSelected, palette::kControl},
    {ImGuiCol_TabDimmedSelectedOverline, palette::kBorderStrong},
    {ImGuiCol_TableHeaderBg, palette::kPopup},
    {ImGuiCol_TableRowBg, palette::kNone},
    {ImGuiCol_TableRowBgAlt, palette::kCard},
    {ImGuiCol_ScrollbarBg, palette::kNone},
    {ImGuiCol_ScrollbarGrab, palette::kGrab},
    {ImGuiCol_ScrollbarGrabHovered, palette::kGrabHovered},
    {ImGuiCol_ScrollbarGrabActive, palette::kGrabHeld},
    {ImGuiCol_SliderGrab, palette::kGrabHovered},
    {ImGuiCol_SliderGrabActive, palette::kGrabHeld},
    {ImGuiCol_ResizeGrip, palette::kNone},
    {ImGuiCol_ResizeGripHovered, palette::kGrabHovered},
    {ImGuiCol_ResizeGripActive, palette::kGrabHeld},
    {ImGuiCol_CheckMark, palette::kPrimaryLight},
    {ImGuiCol_PlotLines, palette::kPrimaryLight},
    {ImGuiCol_PlotLinesHovered, palette::kForeground},
    {ImGuiCol_PlotHistogram, palette::kPrimary},
    {ImGuiCol_PlotHistogramHovered, palette::kPrimaryLight},
    {ImGuiCol_DragDropTarget, palette::kPrimaryLight},
    {ImGuiCol_NavCursor, palette::kNone}, // uiThemeFocusRing draws the cursor instead
    {ImGuiCol_NavWindowingHighlight, palette::kPrimaryLight},
#ifdef IMGUI_HAS_DOCK
    {ImGuiCol_DockingPreview, palette::kSelection},
    {ImGuiCol_DockingEmptyBg, palette::kBackground},
#endif
};
static_assert(std::size(kStyleColours) == ImGuiCol_COUNT);

ImGuiStyle styleAtScaleOne() {
    ImGuiStyle style;
    for (const auto& [role, colour] : kStyleColours)
        style.Colors[role] = ImGui::ColorConvertU32ToFloat4(colour);
    style.WindowPadding = {14.0f, 14.0f};
    style.FramePadding = {14.0f, 8.0f};
    style.ItemSpacing = {6.0f, 8.0f};
    style.ItemInnerSpacing = {8.0f, 6.0f};
    style.WindowRounding = palette::kPopupRounding; // also for modal popups and tooltips
    style.PopupRounding = palette::kPopupRounding;
    style.ChildRounding = palette::kRounding;
    style.FrameRounding = palette::kRounding;
    style.TabRounding = palette::kRounding;
    style.GrabRounding = palette::kRounding;
    style.ScrollbarRounding = palette::kRounding;
    style.ScrollbarSize = 10.0f;
    style.GrabMinSize = 24.0f;
    style.WindowBorderSize = 1.0f;
    style.PopupBorderSize = 1.0f;
    style.FrameBorderSize = 1.0f;
    style.WindowTitleAlign = {0.0f, 0.5f};
    style.WindowMenuButtonPosition = ImGuiDir_None;
    style.DisplaySafeAreaPadding = {8.0f, 8.0f}; // distance of menus from the window's edge
    style.DisabledAlpha = 0.5f;                  // texts of disabled entries have a contrast of 4.5 : 1
    return style;
}

// Sets the font of Dear ImGui's own widgets. Dear ImGui chooses this font when a frame begins. If the scale changes
// during a frame, replaces the font in use, so that no widget in this frame has the old size.
void applyDefaultFont() {
    ImGuiContext& context = *ImGui::GetCurrentContext();
    const float size = uiThemePx(palette::kTextSize);
    ImFont* font = uiThemeFont(palette::kTextSize);
    if (context.IO.FontDefault == font && context.FontSizeBase == size) return;
    context.IO.FontDefault = font;
    context.Style.FontSizeBase = size;
    if (!context.WithinFrameScope) return;
    context.FontStack.front() = {font, size, 0.0f};
    ImGui::SetCurrentFont(font, size, 0.0f);
}

} // namespace

// --- set-up, and calls of each frame ---------------------------------------------------------------------------------

void uiThemeInitialize(UiIntegration* integration) {
    theme.ticked = false;
    theme.seconds = 0.0f;
    fontsInitialize(integration ? integration->fontPath : std::string{}, theme.scale);
    applyDefaultFont();
    ImGui::GetIO().ConfigWindowsMoveFromTitleBarOnly = true; // only popups can be moved
}

void uiThemeShutdown() {
    if (ImGui::GetCurrentContext()) ImGui::GetIO().FontDefault = nullptr;
    fontsShutdown();
    theme = {};
}

void uiThemeSetScale(float scale) {
    if (!(scale > 0.0f)) scale = 1.0f;
    if (scale == theme.scale) return;
    theme.scale = scale;
    fontsSetScale(scale);
}

// Does not count the first tick: it is the time before the first frame, when nothing was on the screen.
void uiThemeTick(float deltaSeconds) {
    if (theme.ticked) theme.seconds += std::max(0.0f, deltaSeconds);
    theme.ticked = true;
}

void uiThemeApplyStyle() {
    static const ImGuiStyle base = styleAtScaleOne();
    ImGuiStyle& style = ImGui::GetStyle();
    const float fontSize = style.FontSizeBase;
    style = base;
    style.FontSizeBase = fontSize;
    style.ScaleAllSizes(theme.scale);
    applyDefaultFont();
}

// --- colours ---------------------------------------------------------------------------------------------------------

ImU32 uiThemeBackground() {
    return palette::kBackground;
}
ImU32 uiThemeCard() {
    return palette::kCard;
}
ImU32 uiThemeBorder() {
    return palette::kBorder;
}
ImU32 uiThemeBorderStrong() {
    return palette::kBorderStrong;
}
ImU32 uiThemeForeground() {
    return palette::kForeground;
}
ImU32 uiThemeMutedForeground() {
    return palette::kMuted;
}
ImU32 uiThemeDestructive() {
    return palette::kDestructive;
}

void uiThemeBackgroundFloat(float* colour) {
    const ImVec4 background = ImGui::ColorConvertU32ToFloat4(palette::kBackground);
    colour[0] = background.x;
    colour[1] = background.y;
    colour[2] = background.z;
    colour[3] = background.w;
}

// --- metrics and type ------------------------------------------------------------------------------------------------

float uiThemePx(float units) {
    const float pixels = units * theme.scale;
    return units == std::trunc(units) ? std::round(pixels) : pixels;
}
ImVec2 uiThemePx(ImVec2 units) {
    return {uiThemePx(units.x), uiThemePx(units.y)};
}
ImVec2 uiThemeWholePixels(ImVec2 point) {
    return {std::round(point.x), std::round(point.y)};
}
float uiThemeWindowRounding() {
    return 0.0f;
}
ImFont* uiThemeFont(float nominalSize) {
    return fontAt(nominalSize);
}
float uiThemeFontSize(ImFont* font) {
    return font->LegacySize;
}

ImVec2 uiThemeTextSize(ImFont* font, std::string_view text, float wrapWidth) {
    if (text.empty()) return {0.0f, font->LegacySize};
    if (wrapWidth <= 0.0f)
        return font->CalcTextSizeA(font->LegacySize, FLT_MAX, 0.0f, text.data(), text.data() + text.size());
    ImVec2 size;
    for (const std::string_view line : wrapText(font, text, wrapWidth)) {
        size.x = std::max(size.x, uiThemeTextSize(font, line).x);
        size.y += font->LegacySize;
    }
    return size;
}

float uiThemeTextTop(ImFont* font, float top, float bottom) {
    constexpr float kAscentShare = 1900.0f / 2400.0f; // Roboto's ascent divided by its line height
    const ImFontBaked* baked = font->GetFontBaked(font->LegacySize);
    const float drawnAscent = std::round(std::round(baked->Ascent) * font->LegacySize / baked->Size);
    return std::round((top + bottom - font->LegacySize) * 0.5f + font->LegacySize * kAscentShare) - drawnAscent;
}

// --- shapes ----------------------------------------------------------------------------------------------------------

void uiThemeRoundedPanel(ImDrawList* drawList, ImVec2 min, ImVec2 max, ImU32 colour, float radius) {
    const ImVec2 size{max.x - min.x, max.y - min.y};
    const float limit = std::min(size.x, size.y) * 0.5f;
    if (radius <= limit - 1.0f || limit <= 0.5f) {
        drawList->AddRectFilled(min, max, colour, radius);
        return;
    }
    // Do not use AddRectFilled for a fully rounded shape: Dear ImGui 1.92 leaves one pixel of each edge straight.
    const ImVec2 first{min.x + limit, min.y + limit};
    const ImVec2 last{max.x - limit, max.y - limit};
    if (std::abs(size.x - size.y) < 0.5f) {
        drawList->AddCircleFilled(first, limit, colour, kPillSegments * 2);
        return;
    }
    const float from = size.x > size.y ? kPi * 0.5f : kPi;
    drawList->PathArcTo(first, limit, from, from + kPi, kPillSegments);
    drawList->PathArcTo(last, limit, from + kPi, from + 2.0f * kPi, kPillSegments);
    drawList->PathFillConvex(colour);
}

void uiThemeBorder(ImDrawList* drawList, ImVec2 min, ImVec2 max, float radius, float thickness, ImU32 colour) {
    drawList->AddRect(min, max, colour, radius, ImDrawFlags_None, thickness);
}

void uiThemeText(ImDrawList* drawList, ImFont* font, ImVec2 position, ImU32 colour, std::string_view text) {
    if (text.empty()) return;
    drawList->AddText(font, font->LegacySize, position, colour, text.data(), text.data() + text.size());
}

// Draws each glyph without AddText, which rounds the position to whole pixels: gaps of a quarter pixel would become
// uneven.
void uiThemeTextTracked(ImDrawList* drawList, ImFont* font, ImVec2 position, ImU32 colour, std::string_view text,
                        float tracking) {
    const ImVec2 start{std::floor(position.x), std::floor(position.y)};
    const char* const end = text.data() + text.size();
    float x = start.x;
    for (const char* at = text.data(); at < end;) {
        unsigned int character = 0;
        at += ImTextCharFromUtf8(&character, at, end);
        ImFontBaked* baked = font->GetFontBaked(font->LegacySize);
        const ImFontGlyph glyph = *baked->FindGlyph(static_cast<ImWchar>(character));
        const float ratio = font->LegacySize / baked->Size;
        if (glyph.Visible) {
            drawList->PrimReserve(6, 4);
            drawList->PrimRectUV({x + glyph.X0 * ratio, start.y + glyph.Y0 * ratio},
                                 {x + glyph.X1 * ratio, start.y + glyph.Y1 * ratio}, {glyph.U0, glyph.V0},
                                 {glyph.U1, glyph.V1}, colour);
        }
        x += glyph.AdvanceX * ratio + uiThemePx(tracking);
    }
}

void uiThemeTextWrapped(ImDrawList* drawList, ImFont* font, ImVec2 position, ImU32 colour, std::string_view text,
                        float wrapWidth, float lineGap) {
    for (const std::string_view line : wrapText(font, text, wrapWidth)) {
        uiThemeText(drawList, font, position, colour, line);
        position.y += font->LegacySize + lineGap;
    }
}

void uiThemeSpinner(ImDrawList* drawList, ImVec2 centre, float radius, float timeSeconds, ImU32 colour) {
    constexpr float kArc = kPi * 0.6f;
    constexpr int kSegments = 32;
    const float thickness = std::max(1.5f, radius * 0.16f);
    const float ring = radius - thickness * 0.5f;
    const ImU32 track = (colour & ~IM_COL32_A_MASK) | ((colour >> IM_COL32_A_SHIFT) / 6u) << IM_COL32_A_SHIFT;
    drawList->AddCircle(centre, ring, track, kSegments * 2, thickness);

    const float turn = std::fmod(timeSeconds, palette::kSpinnerTurnSeconds) / palette::kSpinnerTurnSeconds;
    const float from = turn * 2.0f * kPi - kPi * 0.5f;
    drawList->PathArcTo(centre, ring, from, from + kArc, kSegments);
    drawList->PathStroke(colour, ImDrawFlags_None, thickness);
    for (const float angle : {from, from + kArc})
        drawList->AddCircleFilled({centre.x + std::cos(angle) * ring, centre.y + std::sin(angle) * ring},
                                  thickness * 0.5f, colour);
}

void uiThemeBadge(const char* identifier, ImDrawList* drawList, ImVec2 position, std::string_view text,
                  UiThemeBadgeStatus status) {
    const ImVec2 max{position.x + uiThemeBadgeWidth(text), position.y + uiThemePx(palette::kBadgeHeight)};
    ImGui::ItemAdd({position, max}, ImGui::GetID(identifier), nullptr, ImGuiItemFlags_NoNav);

    const std::size_t index = std::min(static_cast<std::size_t>(status), std::size(palette::kBadges) - 1);
    uiThemeRoundedPanel(drawList, position, max, palette::kBadges[index].fill, (max.y - position.y) * 0.5f);
    ImFont* font = uiThemeFont(palette::kBadgeTextSize);
    const ImVec2 textMin{position.x + uiThemePx(palette::kBadgePadding), uiThemeTextTop(font, position.y, max.y)};
    uiThemeText(drawList, font, textMin, palette::kBadges[index].text, text);
}

float uiThemeBadgeWidth(std::string_view text) {
    return uiThemeTextSize(uiThemeFont(palette::kBadgeTextSize), text).x + 2.0f * uiThemePx(palette::kBadgePadding);
}

void uiThemeFade(ImDrawList* drawList, float opacity) {
    for (ImDrawVert& vertex : drawList->VtxBuffer) {
        const auto alpha = static_cast<ImU32>(static_cast<float>(vertex.col >> IM_COL32_A_SHIFT) * opacity);
        vertex.col = (vertex.col & ~IM_COL32_A_MASK) | alpha << IM_COL32_A_SHIFT;
    }
}

void uiThemeReveal(ImDrawList* drawList, ImVec2 min, ImVec2 max) {
    const float left = 1.0f - theme.seconds / palette::kRevealSeconds;
    if (left <= 0.0f) return;
    const auto alpha = static_cast<ImU32>(255.0f * left * left);
    drawList->AddRectFilled(min, max, (palette::kBackground & ~IM_COL32_A_MASK) | alpha << IM_COL32_A_SHIFT);
    for (const ImGuiWindow* child : ImGui::GetCurrentWindow()->DC.ChildWindows) // children are above the rectangle
        uiThemeFade(child->DrawList, 1.0f - left * left);
}
