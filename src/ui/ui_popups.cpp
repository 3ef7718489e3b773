#include "ui/ui_popups.h"

#include <algorithm>

#include <imgui_internal.h>

#include "ui/ui_keyboard.h"
#include "ui/ui_palette.h"
#include "ui/ui_theme.h"

namespace {

constexpr ImVec2 kMenuPadding = {16.0f, 13.0f};
constexpr ImVec2 kMenuSpacing = {16.0f, 14.0f}; // the highlight of an entry covers half of it on each side
constexpr ImVec2 kModalPadding = {20.0f, 18.0f};
constexpr ImVec2 kModalTitlePadding = {20.0f, 12.0f};
constexpr ImVec2 kModalSpacing = {8.0f, 8.0f};

struct Opening {
    ImGuiID window = 0;
    double since = 0.0; // the time of its first visible frame
};
Opening opening; // of the popup that was opened last

void fadeIn(const ImGuiWindow& window) {
    if (window.Appearing || window.Hidden) opening = {window.ID, ImGui::GetTime()};
    if (window.ID != opening.window) return;
    const float part = static_cast<float>(ImGui::GetTime() - opening.since) / palette::kPopupSeconds;
    if (part >= 1.0f) return;
    const float opacity = 1.0f - (1.0f - part) * (1.0f - part);
    uiThemeFade(window.DrawList, opacity);
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
    ImGui::PushStyleVar(ImGuiStyleVar_FramePadding, uiThemePx(kModalTitlePadding));
    const bool open = ImGui::BeginPopupModal(name, nullptr, ImGuiWindowFlags_AlwaysAutoResize);
    ImGui::PopStyleVar(2);
    ImGui::PopFont();
    if (open) ImGui::PushStyleVar(ImGuiStyleVar_ItemSpacing, uiThemePx(kModalSpacing));
    return open;
}

void uiThemeEndPopup() {
    fadeIn(*ImGui::GetCurrentWindow());
    ImGui::PopStyleVar();
    ImGui::EndPopup();
}

// MenuItem's own highlight (Dear ImGui 1.92) has sharp corners. It is made invisible, and a rounded one is drawn on a
// channel below the entry, because the entry must be drawn before it is known to be hovered.
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
