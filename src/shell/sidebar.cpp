// Draws the left-hand column of the signed-in shell: navigation at the top, the user's card at the bottom.

#include <imgui_internal.h>

#include "shell/launcher_app.h"
#include "shell/shell_layout.h"
#include "shell/user_initials.h"
#include "shell/widgets.h"
#include "ui/ui_keyboard.h"
#include "ui/ui_palette.h"
#include "ui/ui_theme.h"

namespace {

constexpr ImU32 kActiveRowFill = 0xFF2C2A2A;
constexpr ImU32 kHoveredRowFill = 0xFF201E1E;
constexpr ImU32 kActiveRow = IM_COL32_WHITE;
constexpr ImU32 kInactiveRowIcon = palette::kGrey63;
constexpr ImU32 kInactiveRowLabel = palette::kGrey71;
constexpr ImU32 kCardFill = 0xFF1C1A1A;
constexpr ImU32 kCardLines = 0xFF282626;
constexpr ImU32 kAvatarDisc = 0xFF88940D;
constexpr ImU32 kAvatarInitials = IM_COL32_WHITE;
constexpr ImU32 kUserName = palette::kGrey94;
constexpr ImU32 kUserEmail = palette::kGrey59;

constexpr float kMargin = 12.0f;
constexpr float kFirstRowTop = 16.0f;
constexpr float kRowHeight = 36.0f;
constexpr float kRowPitch = 42.0f;
constexpr float kRowIconInset = 10.0f;
constexpr float kRowIconSize = 16.0f;
constexpr float kRowLabelInset = 36.0f;

constexpr float kCardHeight = 96.0f;
constexpr ImVec2 kAvatarCentre = {22.0f, 24.0f};
constexpr float kAvatarRadius = 13.0f;
constexpr float kNameClipLeft = 40.0f;
constexpr float kNameClipTop = 6.0f;
constexpr ImVec2 kNameAt = {42.0f, 10.0f};
constexpr ImVec2 kEmailAt = {42.0f, 26.0f};
constexpr float kCardInset = 8.0f;
constexpr float kDividerTop = 48.0f;
constexpr float kSignOutTop = 56.0f;
constexpr float kSignOutHeight = 28.0f;

struct NavigationRow {
    const char* label;
    LauncherTab tab;
    void (*drawIcon)(ImDrawList*, ImVec2, float, ImU32);
};
constexpr NavigationRow kRows[] = {
    {kProjectsTitle, LauncherTab::Projects, drawFolderIcon},
    {kInstallsTitle, LauncherTab::Installs, drawEditorIcon},
};

void drawNavigationRow(const NavigationRow& row, ImVec2 min, ImVec2 max, LauncherTab& activeTab) {
    const bool active = activeTab == row.tab; // read before the click: the row looks active from the next frame on
    const HitArea area = hitArea(ImGui::GetID(row.label), min, max);
    if (!area.added) return;
    if (area.clicked) activeTab = row.tab;

    ImDrawList* drawList = ImGui::GetWindowDrawList();
    const float rounding = uiThemePx(palette::kRounding);
    if (active) {
        drawList->AddRectFilled(min, max, kActiveRowFill, rounding);
    } else if (area.hovered) {
        drawList->AddRectFilled(min, max, kHoveredRowFill, rounding);
    }
    row.drawIcon(drawList, min + uiThemePx({kRowIconInset, kRowIconInset}), uiThemePx(kRowIconSize),
                 active ? kActiveRow : kInactiveRowIcon);
    ImFont* font = uiThemeFont(13.5f);
    uiThemeText(drawList, font, {min.x + uiThemePx(kRowLabelInset), uiThemeTextTop(font, min.y, max.y)},
                active ? kActiveRow : kInactiveRowLabel, row.label);
    if (area.focused) uiThemeFocusRing(drawList, min, max, rounding);
}

void drawAvatar(ImDrawList* drawList, ImVec2 centre, const std::string& displayName) {
    drawList->AddCircleFilled(centre, uiThemePx(kAvatarRadius), kAvatarDisc);
    const std::string initials = userInitials(displayName);
    ImFont* font = uiThemeFont(11.0f);
    uiThemeText(drawList, font, centre - uiThemeTextSize(font, initials) * 0.5f, kAvatarInitials, initials);
}

// Draws the user's card. Returns true if the user pressed "Sign out".
bool drawUserCard(ImVec2 min, ImVec2 max, const std::string& displayName, const std::string& email) {
    ImDrawList* drawList = ImGui::GetWindowDrawList();
    const auto at = [min](ImVec2 offset) { return min + uiThemePx(offset); };
    drawList->AddRectFilled(min, max, kCardFill, uiThemePx(palette::kRounding));
    drawList->AddRect(min, max, kCardLines, uiThemePx(palette::kRounding), 0, 1.0f);
    drawAvatar(drawList, at(kAvatarCentre), displayName);

    const float dividerY = min.y + uiThemePx(kDividerTop);
    drawList->PushClipRect(at({kNameClipLeft, kNameClipTop}), {max.x - uiThemePx(kCardInset), dividerY}, true);
    uiThemeText(drawList, uiThemeFont(13.0f), at(kNameAt), kUserName, displayName);
    uiThemeText(drawList, uiThemeFont(11.0f), at(kEmailAt), kUserEmail, email);
    drawList->PopClipRect();

    const float inset = uiThemePx(kCardInset);
    drawList->AddLine({min.x + inset, dividerY}, {max.x - inset, dividerY}, kCardLines, 1.0f);
    return drawSecondaryButton("Sign out", at({kCardInset, kSignOutTop}),
                               {max.x - min.x - 2.0f * inset, uiThemePx(kSignOutHeight)}, 13.0f);
}

} // namespace

void LauncherApp::drawSidebar() {
    const ImVec2 window = ImGui::GetWindowPos();
    const float left = window.x + uiThemePx(kMargin);
    const float right = window.x + uiThemePx(kSidebarWidth) - uiThemePx(kMargin);
    const float bottom = window.y + ImGui::GetWindowSize().y - uiThemePx(kMargin);

    float rowTop = window.y + uiThemePx(kFirstRowTop);
    for (const NavigationRow& row : kRows) {
        drawNavigationRow(row, {left, rowTop}, {right, rowTop + uiThemePx(kRowHeight)}, activeTab);
        rowTop += uiThemePx(kRowPitch);
    }

    const std::string displayName = signIn && !signIn->userName.empty() ? signIn->userName : "Developer";
    const std::string email = signIn ? signIn->userEmail : std::string();
    if (drawUserCard({left, bottom - uiThemePx(kCardHeight)}, {right, bottom}, displayName, email)) {
        if (signIn) signIn->signOut();
        updateCheckStarted = false;
    }
}
