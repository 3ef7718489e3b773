// Draws the Downloads screen: one row for each package download since the launcher started, newest first.

#include <array>
#include <filesystem>

#include <imgui_internal.h>

#include "install/format_bytes.h"
#include "install/install_widgets.h"
#include "shell/launcher_app.h"
#include "shell/shell_layout.h"
#include "shell/widgets.h"
#include "system/operating_system.h"
#include "system/path_text.h"
#include "ui/ui_list.h"
#include "ui/ui_palette.h"
#include "ui/ui_theme.h"

namespace {

constexpr ImU32 kEmptyText = palette::kGrey55;
constexpr ImU32 kRowTitle = 0xFFEBEBEB;
constexpr ImU32 kFileText = palette::kGrey59;

constexpr float kRowHeight = 64.0f;
constexpr float kRowGap = 6.0f;
constexpr float kRowInset = 16.0f;
constexpr float kBodyLeft = 120.0f;
constexpr float kButtonHeight = 32.0f;
constexpr float kButtonTop = 16.0f;
constexpr float kRetryLeft = 230.0f; // this and kShowLeft: from the row's right edge
constexpr float kShowLeft = 150.0f;
constexpr float kTextGap = 8.0f; // between a long path and the buttons

constexpr std::array<InstallBadge, 5> kBadges = {{
    kBadgeDownloading,
    {"Downloaded", UiThemeBadgeStatus::Neutral},
    kBadgeInstalling,
    kBadgeInstalled,
    kBadgeFailed,
}};

std::string fileText(const std::string& path) {
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(path, error);
    return (error ? "removed from disk" : formatBytes(static_cast<std::int64_t>(size))) + " - " + path;
}

} // namespace

void LauncherApp::drawDownloadsScreen() {
    const ImVec2 content = drawContentArea("Downloads");
    const ImVec2 windowMax = ImGui::GetWindowPos() + ImGui::GetWindowSize();
    const ImVec2 buttonSize = uiThemePx({190.0f, kButtonHeight});
    if (drawSecondaryButton(
            "Open downloads folder",
            {windowMax.x - uiThemePx(kContentInset) - buttonSize.x, ImGui::GetWindowPos().y + uiThemePx(kContentTop)},
            buttonSize, 13.0f)) {
        openInFileManager(config->downloadsDirectory);
    }

    const ImVec2 list = content + uiThemePx({kContentInset, kContentTop + kTitleLineHeight});
    const std::size_t count = install ? install->downloadsSnapshot().size() : 0;
    if (count == 0) {
        uiThemeText(ImGui::GetWindowDrawList(), uiThemeFont(12.0f), list + uiThemePx({0.0f, 8.0f}), kEmptyText,
                    "No package downloads in this session. Downloaded packages stay on disk and are reused when the "
                    "same version is requested again.");
        return;
    }
    uiThemeBeginList(
        "##DownloadList", list,
        {windowMax.x - content.x - uiThemePx(2.0f * kContentInset), windowMax.y - list.y - uiThemePx(kContentTop)});
    for (std::size_t index = 0; index < count; ++index)
        drawDownloadRow(static_cast<int>(index));
    uiThemeEndList();
}

void LauncherApp::drawDownloadRow(int index) {
    // Copy the records again for each row: a click on "Delete" in a row above may just have removed one.
    const std::vector<DownloadRecord> downloads =
        install ? install->downloadsSnapshot() : std::vector<DownloadRecord>();
    if (index < 0 || static_cast<std::size_t>(index) >= downloads.size()) return;
    const DownloadRecord& record = downloads[static_cast<std::size_t>(index)];

    const ImVec2 min = ImGui::GetCursorScreenPos();
    const float width = ImGui::GetContentRegionAvail().x;
    const ImVec2 max = min + ImVec2(width, uiThemePx(kRowHeight));
    ImGui::Dummy({width, uiThemePx(kRowHeight + kRowGap)});
    ImGui::PushID(index);
    drawInstallCard(min, max);

    ImDrawList* drawList = ImGui::GetWindowDrawList();
    uiThemeText(drawList, uiThemeFont(14.0f), min + uiThemePx({kRowInset, 12.0f}), kRowTitle,
                "VOLO Editor " + record.version);
    const auto status = static_cast<std::size_t>(record.status);
    const InstallBadge& badge = kBadges[status < kBadges.size() ? status : 0];
    uiThemeBadge("dl_badge", drawList, min + uiThemePx({kRowInset, 36.0f}), badge.text, badge.look);

    const ImVec2 right(max.x, min.y);
    const auto button = [&](const char* label, float leftOffset, float buttonWidth) {
        return drawSecondaryButton(label, right + uiThemePx({-leftOffset, kButtonTop}),
                                   uiThemePx({buttonWidth, kButtonHeight}), 13.0f);
    };
    if (status == 0 || status >= kBadges.size()) {
        drawTransferProgress(min + uiThemePx({kBodyLeft, 24.0f}), right + uiThemePx({-130.0f, 32.0f}),
                             min + uiThemePx({kBodyLeft, 38.0f}), record.downloadedBytes, record.totalBytes);
        if (button(kCancelLabel, 110.0f, 94.0f)) install->requestCancel();
    } else {
        const bool failed = record.status == DownloadStatus::Failed;
        drawList->PushClipRect(min, right + uiThemePx({-(failed ? kRetryLeft : kShowLeft) - kTextGap, kRowHeight}),
                               true);
        uiThemeText(drawList, uiThemeFont(12.0f), min + uiThemePx({kBodyLeft, 26.0f}), kFileText,
                    fileText(record.filePath));
        drawList->PopClipRect();
        if (failed && button(kRetryLabel, kRetryLeft, 70.0f)) install->startUpdate();
        if (button("Show", kShowLeft, 65.0f)) {
            openInFileManager(pathText(std::filesystem::path(record.filePath).parent_path()));
        }
        if (button("Delete", 75.0f, 65.0f)) install->removeDownload(index);
    }
    ImGui::PopID();
}
