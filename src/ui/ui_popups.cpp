#include "ui/ui_popups.h"

#include <algorithm>

#include <imgui_internal.h>

#include "ui/ui_keyboard.h"
#include "ui/ui_palette.h"
#include "ui/ui_text.h"
#include "ui/ui_theme.h"

namespace {

constexpr ImVec2 kMenuPadding = {16.0f, 13.0f};
constexpr ImVec2 kMenuSpacing = {16.0f, 14.0f}; // half of it extends an entry's highlight on each side
constexpr ImVec2 kModalPadding = {20.0f, 18.0f};
constexpr ImVec2 kModalTitlePadding = {20.0f, 12.0f};
constexpr ImVec2 kModalSpacing = {8.0f, 8.0f};
constexpr float kParagraphLineGap = 4.0f;
constexpr ImVec2 kTooltipPadding = {10.0f, 8.0f};
constexpr float kTooltipWidth = 480.0f;

struct Opening {
    ImGuiID window = 0;
    double since = 0.0; // the time of its first visible frame
};
Opening opening; // the popup that was opened last

void fadeIn(const ImGuiWindow& window) {
    if (window.Appearing || window.Hidden) opening = {window.ID, ImGui::GetTime()};
    if (window.ID != opening.window) return;
    const float part = static_cast<float>(ImGui::GetTime() - opening.since) / palette::kPopupSeconds;
    if (part >= 1.0f) return;
    const float opacity = 1.0f - (1.0f - part) * (1.0f - part);
    uiThemeFade(window.DrawList, opacity);
}

// Moves a modal popup back into the viewport after the popup or the viewport has changed its size. Does nothing else,
// so that the user may drag the popup anywhere.
void keepInside(ImGuiWindow* popup) {
    static ImVec2 checkedViewport, checkedSize;
    const ImGuiViewport& viewport = *ImGui::GetMainViewport();
    if (viewport.WorkSize == checkedViewport && popup->Size == checkedSize) return;
    checkedViewport = viewport.WorkSize;
    checkedSize = popup->Size;
    const ImVec2 margin = ImGui::GetStyle().DisplaySafeAreaPadding;
    const ImVec2 last = viewport.WorkPos + viewport.WorkSize - margin - popup->Size;
    const ImVec2 inside = ImMax(ImMin(popup->Pos, last), viewport.WorkPos + margin);
    if (inside != popup->Pos) ImGui::SetWindowPos(popup, inside);
}

} // namespace

bool uiThemeBeginMenu(const char* name) {
    ImGui::PushStyleVar(ImGuiStyleVar_WindowPadding, uiThemePx(kMenuPadding));
    const bool open = ImGui::BeginPopup(name);
    ImGui::PopStyleVar();
    if (open) ImGui::PushStyleVar(ImGuiStyleVar_ItemSpacing, uiThemePx(kMenuSpacing));
    return open;
}

bool uiThemeBeginModal(const char* name) {
    ImFont* title = uiThemeFont(palette::kTitleSize);
    ImGui::PushFont(title, uiThemeFontSize(title));
    ImGui::PushStyleVar(ImGuiStyleVar_WindowPadding, uiThemePx(kModalPadding));
    ImVec2 titlePadding = uiThemePx(kModalTitlePadding);
    titlePadding.x -=
        ImGui::GetStyle().WindowBorderSize; // Dear ImGui 1.92 adds the border to the title, but not to the content
    ImGui::PushStyleVar(ImGuiStyleVar_FramePadding, titlePadding);
    const bool open = ImGui::BeginPopupModal(name, nullptr, ImGuiWindowFlags_AlwaysAutoResize);
    ImGui::PopStyleVar(2);
    ImGui::PopFont();
    if (!open) return false;
    keepInside(ImGui::GetCurrentWindow());
    ImGui::PushStyleVar(ImGuiStyleVar_ItemSpacing, uiThemePx(kModalSpacing));
    return true;
}

void uiThemeEndPopup() {
    fadeIn(*ImGui::GetCurrentWindow());
    ImGui::PopStyleVar();
    ImGui::EndPopup();
}

// Draws a menu entry with a rounded highlight. MenuItem's own highlight (Dear ImGui 1.92) has sharp corners, so it is
// made transparent. Whether the entry is hovered is known only after MenuItem has drawn the text. So the rounded
// highlight is drawn after the text, but on a lower channel, which puts it behind the text.
bool uiThemeMenuItem(const char* label, bool enabled) {
    ImDrawList* drawList = ImGui::GetWindowDrawList();
    drawList->ChannelsSplit(2);
    drawList->ChannelsSetCurrent(1);
    for (const ImGuiCol highlight : {ImGuiCol_Header, ImGuiCol_HeaderHovered, ImGuiCol_HeaderActive})
        ImGui::PushStyleColor(highlight, palette::kNone);
    const bool chosen = ImGui::MenuItem(label, nullptr, false, enabled);
    ImGui::PopStyleColor(3);
    drawList->ChannelsSetCurrent(0);
    if (ImGui::IsItemHovered() || uiThemeFocusShows(ImGui::GetItemID())) {
        uiThemeRoundedPanel(drawList, ImGui::GetItemRectMin(), ImGui::GetItemRectMax(),
                            ImGui::IsItemActive() ? palette::kControlHeld : palette::kControlHovered,
                            uiThemePx(palette::kRounding));
    }
    drawList->ChannelsMerge();
    return chosen;
}

void uiThemeParagraph(std::string_view text, ImU32 colour, float width) {
    ImFont* font = uiThemeFont(palette::kTextSize);
    ImGui::PushStyleColor(ImGuiCol_Text, colour);
    ImGui::PushStyleVarY(ImGuiStyleVar_ItemSpacing, uiThemePx(kParagraphLineGap));
    ImGui::BeginGroup();
    for (const std::string_view line : wrapText(font, text, width))
        ImGui::TextUnformatted(line.data(), line.data() + line.size());
    ImGui::EndGroup();
    ImGui::PopStyleVar();
    ImGui::PopStyleColor();
}

static int tooltipWaitsInFrame = -1;

bool uiThemeTooltipWaits() {
    return tooltipWaitsInFrame == ImGui::GetFrameCount();
}

void uiThemeTooltip(ImGuiID item, const ImRect& rectangle, std::string_view text) {
    constexpr float kDelaySeconds = 0.5f;
    static ImGuiID pointedItem = 0;
    static double since = 0.0;
    if (!ImGui::IsWindowHovered() || !rectangle.Contains(ImGui::GetIO().MousePos)) {
        if (pointedItem == item) pointedItem = 0;
        return;
    }
    if (pointedItem != item || ImGui::IsMouseDown(ImGuiMouseButton_Left)) since = ImGui::GetTime();
    pointedItem = item;
    if (ImGui::GetTime() - since < kDelaySeconds) {
        tooltipWaitsInFrame = ImGui::GetFrameCount();
        return;
    }
    ImGui::PushStyleVar(ImGuiStyleVar_WindowPadding, uiThemePx(kTooltipPadding));
    if (ImGui::BeginTooltip()) {
        uiThemeParagraph(text, palette::kForeground, uiThemePx(kTooltipWidth));
        ImGui::EndTooltip();
    }
    ImGui::PopStyleVar();
}

void uiThemeFootLine(std::string_view text) {
    constexpr ImVec2 kPadding = {16.0f, 10.0f};
    constexpr float kAboveBottom = 24.0f;
    ImFont* font = uiThemeFont(13.0f);
    const ImGuiViewport& viewport = *ImGui::GetMainViewport();
    const ImVec2 padding = uiThemePx(kPadding);
    const float width = viewport.WorkSize.x - 4.0f * padding.x;
    const ImVec2 size = uiThemeTextSize(font, text, width) + padding * 2.0f;
    const ImVec2 min =
        uiThemeWholePixels({viewport.WorkPos.x + (viewport.WorkSize.x - size.x) * 0.5f,
                            viewport.WorkPos.y + viewport.WorkSize.y - uiThemePx(kAboveBottom) - size.y});
    ImDrawList* drawList = ImGui::GetForegroundDrawList();
    uiThemeRoundedPanel(drawList, min, min + size, palette::kControl, uiThemePx(palette::kRounding));
    uiThemeBorder(drawList, min, min + size, uiThemePx(palette::kRounding), 1.0f, palette::kBorderStrong);
    uiThemeTextWrapped(drawList, font, min + padding, palette::kForeground, text, width, 0.0f);
}

bool uiThemeDefaultButton(const char* label, float width) {
    ImGui::PushStyleColor(ImGuiCol_Text, palette::kOnPrimary);
    ImGui::PushStyleColor(ImGuiCol_Button, palette::kPrimary);
    ImGui::PushStyleColor(ImGuiCol_ButtonHovered, palette::kPrimaryHovered);
    ImGui::PushStyleColor(ImGuiCol_ButtonActive, palette::kPrimaryHeld);
    ImGui::PushStyleColor(ImGuiCol_Border, palette::kNone);
    const bool clicked = ImGui::Button(label, {width, 0.0f});
    ImGui::PopStyleColor(5);
    return clicked;
}
