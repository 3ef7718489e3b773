#include "shell/widgets.h"

#include <algorithm>
#include <utility>

#include <imgui_internal.h>

#include "shell/shell_layout.h"
#include "ui/ui_keyboard.h"
#include "ui/ui_palette.h"
#include "ui/ui_theme.h"

namespace {

constexpr float kTitleDrop = 2.0f; // distance of the title below kContentTop

struct ButtonLook {
    ImU32 normal, hovered, held;
    ImU32 outline; // 0: none
    ImU32 text;
};
constexpr ButtonLook kPrimary = {palette::kPrimary, palette::kPrimaryHovered, palette::kPrimaryHeld, 0,
                                 palette::kOnPrimary};
constexpr ButtonLook kSecondary = {0xFF202020, 0xFF2A2A2A, 0xFF303030, 0xFF3C3C3C, palette::kGrey86};

bool drawButton(const char* label, ImVec2 position, ImVec2 size, float fontSize, const ButtonLook& look) {
    ImGuiWindow* window = ImGui::GetCurrentWindow();
    if (window->SkipItems) return false;
    const ImVec2 max = position + size;
    const HitArea area = hitArea(window->GetID(label), position, max);
    if (!area.added) return false;

    ImDrawList* drawList = window->DrawList;
    const float rounding = uiThemePx(palette::kRounding);
    const ImVec2 drawnMin = uiThemeWholePixels(position), drawnMax = uiThemeWholePixels(max);
    uiThemeRoundedPanel(drawList, drawnMin, drawnMax,
                        area.held      ? look.held
                        : area.hovered ? look.hovered
                                       : look.normal,
                        rounding);
    if (look.outline != 0) uiThemeBorder(drawList, drawnMin, drawnMax, rounding, 1.0f, look.outline);

    ImFont* font = uiThemeFont(fontSize);
    const float left = position.x + (size.x - uiThemeTextSize(font, label).x) * 0.5f;
    uiThemeText(drawList, font, {left, uiThemeTextTop(font, position.y, max.y)}, look.text, label);
    if (area.focused) uiThemeFocusRing(drawList, drawnMin, drawnMax, rounding);
    return area.clicked;
}

// The corners of a five-pointed star of radius 1, clockwise from the top. Outer and inner corners alternate; the inner
// corners have the radius 0.4.
constexpr ImVec2 kStar[10] = {
    {0.0f, -1.0f}, {0.235114f, -0.323607f}, {0.951057f, -0.309017f}, {0.380423f, 0.123607f},   {0.587785f, 0.809017f},
    {0.0f, 0.4f},  {-0.587785f, 0.809017f}, {-0.380423f, 0.123607f}, {-0.951057f, -0.309017f}, {-0.235114f, -0.323607f},
};

} // namespace

HitArea hitArea(ImGuiID id, ImVec2 min, ImVec2 max) {
    HitArea area;
    const ImRect rectangle(min, max);
    area.added = ImGui::ItemAdd(rectangle, id);
    if (!area.added) return area;
    area.clicked = ImGui::ButtonBehavior(rectangle, id, &area.hovered, &area.held);
    ImGui::KeepAliveID(id);
    area.focused = uiThemeFocusShows(id);
    return area;
}

void copyOnCtrlC(const std::string& text) {
    if (ImGui::Shortcut(ImGuiMod_Ctrl | ImGuiKey_C)) ImGui::SetClipboardText(text.c_str());
}

ImVec2 drawContentArea(const char* title) {
    ImDrawList* drawList = ImGui::GetWindowDrawList();
    const ImVec2 min = ImGui::GetWindowPos() + uiThemePx({kSidebarWidth, 0.0f});
    drawList->AddRectFilled(min, ImGui::GetWindowPos() + ImGui::GetWindowSize(), palette::kContent,
                            uiThemeWindowRounding(), ImDrawFlags_RoundCornersBottomRight);
    uiThemeText(drawList, uiThemeFont(22.0f),
                min + ImVec2(uiThemePx(kContentInset), uiThemePx(kContentTop) + uiThemePx(kTitleDrop)),
                palette::kForeground, title);
    return min;
}

bool drawPrimaryButton(const char* label, ImVec2 position, ImVec2 size, float fontSize) {
    return drawButton(label, position, size, fontSize, kPrimary);
}

bool drawSecondaryButton(const char* label, ImVec2 position, ImVec2 size, float fontSize) {
    return drawButton(label, position, size, fontSize, kSecondary);
}

void drawProgressBar(ImDrawList* drawList, ImVec2 min, ImVec2 max, float fraction) {
    const ImVec2 size = max - min;
    const float radius = size.y * 0.5f;
    uiThemeRoundedPanel(drawList, min, max, uiThemeBorderStrong(), radius);
    if (!(fraction > 0.001f)) return;
    // The bar is at least as wide as it is high, so that a small fraction is a round dot.
    const float width = std::max(size.x * std::min(fraction, 1.0f), size.y);
    uiThemeRoundedPanel(drawList, min, ImVec2(min.x + width, max.y), uiThemeForeground(), radius);
}

void drawStarIcon(ImDrawList* drawList, ImVec2 centre, float radius, ImU32 colour, bool filled) {
    ImVec2 corners[10];
    for (int i = 0; i < 10; ++i)
        corners[i] = centre + kStar[i] * radius;
    if (filled) {
        // Fill without anti-aliasing, because anti-aliased triangles show the edges between them. The outline below
        // smooths the star's own edges.
        const ImDrawListFlags smooth =
            std::exchange(drawList->Flags, drawList->Flags & ~ImDrawListFlags_AntiAliasedFill);
        for (int i = 0; i < 10; ++i)
            drawList->AddTriangleFilled(centre, corners[i], corners[(i + 1) % 10], colour);
        drawList->Flags = smooth;
    }
    drawList->AddPolyline(corners, 10, colour, ImDrawFlags_Closed, filled ? 1.0f : 1.2f);
}

void drawFolderIcon(ImDrawList* drawList, ImVec2 topLeft, float size, ImU32 colour) {
    const float x = topLeft.x, y = topLeft.y, height = 0.75f * size;
    drawList->AddRect({x, y + 0.28f * height}, {x + size, y + height}, colour, 1.0f, 0, 1.2f);
    ImVec2 tab[4] = {
        {x, y + 0.28f * height}, {x, y}, {x + 0.38f * size, y}, {x + 0.38f * size + 2.0f, y + 0.28f * height}};
    for (ImVec2& point : tab)
        point += ImVec2(0.5f, 0.5f); // like AddRect, which adds half a pixel to its corners
    drawList->AddPolyline(tab, 4, colour, ImDrawFlags_None, 1.2f);
}

void drawEditorIcon(ImDrawList* drawList, ImVec2 topLeft, float size, ImU32 colour) {
    const float x = topLeft.x, y = topLeft.y, height = 0.75f * size;
    drawList->AddRect({x, y}, {x + size, y + height}, colour, 1.0f, 0, 1.2f);
    drawList->AddLine({x, y + 0.55f * height}, {x + size, y + 0.55f * height}, colour, 1.0f);
    drawList->AddCircleFilled({x + 0.8f * size, y + 0.78f * height}, 1.5f, colour);
}
