// The Installs screen: one card that tells which editor there is, where it is and what the install worker is doing,
// with the one action that fits.

#include <array>

#include <imgui_internal.h>

#include "install/editor_location.h"
#include "install/install_widgets_screen.h"
#include "shell/launcher_app.h"
#include "shell/shell_layout.h"
#include "shell/widgets.h"
#include "ui/ui_theme.h"

namespace {

constexpr ImU32 kIcon = 0xFFC8C8C8;
constexpr ImU32 kTitle = 0xFFF5F5F5;
constexpr ImU32 kLocation = 0xFFA0A0A0;
constexpr ImU32 kNoLocation = 0xFF3CA0EF;
constexpr ImU32 kStatusLine = 0xFF828282;
constexpr ImU32 kBusyLabel = 0xFFB4B4B4;

constexpr float kCardHeight = 148.0f;
constexpr float kCardInset = 20.0f;
constexpr float kIconTop = 22.0f;
constexpr float kIconSize = 22.0f;
constexpr float kTextLeft = 54.0f;
constexpr float kTitleTop = 16.0f;
constexpr float kLocationTop = 44.0f;
constexpr float kStatusTop = 66.0f;
constexpr float kActionAboveBottom = 44.0f;
constexpr float kButtonHeight = 30.0f;

constexpr std::array<InstallBadge, 7> kBadges = {{
    {"Idle", UiThemeBadgeStatus::Neutral},
    {"Checking", UiThemeBadgeStatus::Working},
    kBadgeDownloading,
    kBadgeInstalling,
    kBadgeInstalled,
    {"Installed (offline)", UiThemeBadgeStatus::Neutral},
    kBadgeFailed,
}};

ImVec2 px(float x, float y) {
    return {uiThemePx(x), uiThemePx(y)};
}

// Spinner and label. Its clock runs only while it shows, and is never reset.
void drawBusy(ImVec2 rowRight, const char* label) {
    static float clock = 0.0f;
    clock += ImGui::GetIO().DeltaTime;
    ImDrawList* drawList = ImGui::GetWindowDrawList();
    uiThemeSpinner(drawList, rowRight + px(-130.0f, 15.0f), uiThemePx(12.0f), clock, uiThemeMutedForeground());
    uiThemeText(drawList, uiThemeFont(12.0f), rowRight + px(-106.0f, 8.0f), kBusyLabel, label);
}

bool drawAction(const char* label, ImVec2 rowRight, float leftOffset, float width) {
    return drawSecondaryButton(label, rowRight + px(-leftOffset, 0.0f), px(width, kButtonHeight), 13.0f);
}

} // namespace

void LauncherApp::drawInstallsScreen() {
    const EditorInstallStatus status = install ? install->status() : EditorInstallStatus::Idle;
    const std::string message = install ? install->statusMessage() : std::string();

    const ImVec2 content = drawInstallBackdrop(kInstallsTitle);
    const ImVec2 min = content + px(kContentInset, kContentTop + kInstallHeaderHeight);
    const ImVec2 max(ImGui::GetWindowPos().x + ImGui::GetWindowSize().x - uiThemePx(kContentInset),
                     min.y + uiThemePx(kCardHeight));
    drawInstallCard(min, max);

    ImDrawList* drawList = ImGui::GetWindowDrawList();
    drawEditorIcon(drawList, min + px(kCardInset, kIconTop), uiThemePx(kIconSize), kIcon);
    const std::string version = install ? installedEditorVersion() : std::string();
    uiThemeText(drawList, uiThemeFont(16.0f), min + px(kTextLeft, kTitleTop), kTitle, editorLabel(version));

    const std::size_t known = static_cast<std::size_t>(status) < kBadges.size() ? static_cast<std::size_t>(status) : 0;
    const InstallBadge& badge = kBadges[known];
    uiThemeBadge("install_badge", drawList,
                 {max.x - uiThemePx(kCardInset) - uiThemeBadgeWidth(badge.text), min.y + uiThemePx(kTitleTop)},
                 badge.text, badge.look);

    const std::string editor = resolveEditorExecutable(*this);
    ImFont* small = uiThemeFont(12.0f);
    drawList->PushClipRect(min, max - px(kCardInset, 0.0f), true); // long paths and messages end inside the card
    uiThemeText(drawList, small, min + px(kTextLeft, kLocationTop), editor.empty() ? kNoLocation : kLocation,
                editor.empty() ? "No editor installation found." : "Location: " + editor);
    uiThemeText(drawList, small, min + px(kTextLeft, kStatusTop), kStatusLine,
                message.empty() ? "Channel: Stable - Linux x86_64" : message);
    drawList->PopClipRect();
    drawInstallAction(status, min.x, {max.x, max.y - uiThemePx(kActionAboveBottom)});
}

void LauncherApp::drawInstallAction(EditorInstallStatus status, float cardLeft, ImVec2 rowRight) {
    bool startWanted = false;
    switch (status) {
    case EditorInstallStatus::Downloading: {
        const float left = cardLeft + uiThemePx(kTextLeft);
        drawTransferProgress({left, rowRight.y + uiThemePx(4.0f)}, rowRight + px(-160.0f, 12.0f),
                             {left, rowRight.y + uiThemePx(16.0f)}, install->downloadedBytes(), install->totalBytes());
        if (drawAction("Cancel download", rowRight, 152.0f, 136.0f)) install->requestCancel();
        break;
    }
    case EditorInstallStatus::Checking:
        drawBusy(rowRight, "Checking...");
        break;
    case EditorInstallStatus::Installing:
        drawBusy(rowRight, "Installing...");
        break;
    case EditorInstallStatus::Failed:
        startWanted = drawAction(kRetryLabel, rowRight, 110.0f, 94.0f);
        break;
    default:
        startWanted = drawAction("Check for updates", rowRight, 160.0f, 144.0f);
        break;
    }
    if (startWanted && install) install->startUpdate();
}
