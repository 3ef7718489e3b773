// Draws the Installs screen: one card with the installed editor, its location, the install status, and the button or
// the spinner for this status.

#include <array>

#include <imgui_internal.h>

#include "install/editor_location.h"
#include "install/install_widgets.h"
#include "shell/launcher_app.h"
#include "shell/shell_layout.h"
#include "shell/widgets.h"
#include "ui/ui_palette.h"
#include "ui/ui_theme.h"

namespace {

constexpr ImU32 kIcon = palette::kGrey78;
constexpr ImU32 kTitle = palette::kForeground;
constexpr ImU32 kLocation = palette::kGrey63;
constexpr ImU32 kNoLocation = 0xFF3CA0EF;
constexpr ImU32 kStatusLine = palette::kGrey51;
constexpr ImU32 kBusyLabel = palette::kGrey71;

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

// Draws a spinner with a label. The clock advances only in frames that show the spinner, and is never reset.
void drawBusy(ImVec2 rowRight, const char* label) {
    static float clock = 0.0f;
    clock += ImGui::GetIO().DeltaTime;
    ImDrawList* drawList = ImGui::GetWindowDrawList();
    uiThemeSpinner(drawList, rowRight + uiThemePx({-130.0f, 15.0f}), uiThemePx(12.0f), clock, uiThemeMutedForeground());
    uiThemeText(drawList, uiThemeFont(12.0f), rowRight + uiThemePx({-106.0f, 8.0f}), kBusyLabel, label);
}

bool drawAction(const char* label, ImVec2 rowRight, float leftOffset, float width) {
    return drawSecondaryButton(label, rowRight + uiThemePx({-leftOffset, 0.0f}), uiThemePx({width, kButtonHeight}),
                               13.0f);
}

} // namespace

void LauncherApp::drawInstallsScreen() {
    const EditorInstallStatus status = install ? install->status() : EditorInstallStatus::Idle;
    const std::string message = install ? install->statusMessage() : std::string();

    const ImVec2 content = drawContentArea(kInstallsTitle);
    const ImVec2 min = content + uiThemePx({kContentInset, kContentTop + kTitleLineHeight});
    const ImVec2 max(ImGui::GetWindowPos().x + ImGui::GetWindowSize().x - uiThemePx(kContentInset),
                     min.y + uiThemePx(kCardHeight));
    drawInstallCard(min, max);

    ImDrawList* drawList = ImGui::GetWindowDrawList();
    drawEditorIcon(drawList, min + uiThemePx({kCardInset, kIconTop}), uiThemePx(kIconSize), kIcon);
    const std::string version = install ? looks.ask(&installedEditorVersion) : std::string();
    uiThemeText(drawList, uiThemeFont(16.0f), min + uiThemePx({kTextLeft, kTitleTop}), kTitle, editorLabel(version));

    const std::size_t known = static_cast<std::size_t>(status) < kBadges.size() ? static_cast<std::size_t>(status) : 0;
    const InstallBadge& badge = kBadges[known];
    uiThemeBadge("install_badge", drawList,
                 {max.x - uiThemePx(kCardInset) - uiThemeBadgeWidth(badge.text), min.y + uiThemePx(kTitleTop)},
                 badge.text, badge.look);

    const std::string editor = looks.ask([this] { return resolveEditorExecutable(*this); });
    ImFont* small = uiThemeFont(12.0f);
    drawList->PushClipRect(min, max - uiThemePx({kCardInset, 0.0f}),
                           true); // clip long paths and messages at the card's edge
    uiThemeText(drawList, small, min + uiThemePx({kTextLeft, kLocationTop}), editor.empty() ? kNoLocation : kLocation,
                editor.empty() ? "No editor installation found." : "Location: " + editor);
    const std::string statusLine = message.empty() ? "Channel: Stable - Linux x86_64" : message;
    uiThemeText(drawList, small, min + uiThemePx({kTextLeft, kStatusTop}), kStatusLine, statusLine);
    drawList->PopClipRect();
    copyOnCtrlC(statusLine);
    drawInstallAction(status, min.x, {max.x, max.y - uiThemePx(kActionAboveBottom)});
}

void LauncherApp::drawInstallAction(EditorInstallStatus status, float cardLeft, ImVec2 rowRight) {
    bool startWanted = false;
    switch (status) {
    case EditorInstallStatus::Downloading: {
        const float left = cardLeft + uiThemePx(kTextLeft);
        drawTransferProgress({left, rowRight.y + uiThemePx(4.0f)}, rowRight + uiThemePx({-160.0f, 12.0f}),
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
    if (startWanted) install->startUpdate();
}
