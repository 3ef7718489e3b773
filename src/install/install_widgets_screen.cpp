#include "install/install_widgets_screen.h"

#include <imgui_internal.h>

#include "install/format_bytes.h"
#include "shell/shell_layout.h"
#include "shell/widgets.h"
#include "ui/ui_theme.h"

namespace {

constexpr ImU32 kContentFill = 0xFF1A1A1A;
constexpr float kCardRounding = 6.0f;
constexpr float kHeadingDrop = 2.0f;

} // namespace

ImVec2 drawInstallBackdrop(const char* heading) {
    ImDrawList* drawList = ImGui::GetWindowDrawList();
    const ImVec2 min = ImGui::GetWindowPos() + ImVec2(uiThemePx(kSidebarWidth), 0.0f);
    drawList->AddRectFilled(min, ImGui::GetWindowPos() + ImGui::GetWindowSize(), kContentFill, uiThemeWindowRounding(),
                            ImDrawFlags_RoundCornersBottomRight);
    uiThemeText(drawList, uiThemeFont(22.0f),
                min + ImVec2(uiThemePx(kContentInset), uiThemePx(kContentTop) + uiThemePx(kHeadingDrop)),
                kInstallHeading, heading);
    return min;
}

void drawInstallCard(ImVec2 min, ImVec2 max) {
    ImDrawList* drawList = ImGui::GetWindowDrawList();
    drawList->AddRectFilled(min, max, kInstallCardFill, uiThemePx(kCardRounding));
    drawList->AddRect(min, max, kInstallCardOutline, uiThemePx(kCardRounding), 0, 1.0f);
}

void drawTransferProgress(ImVec2 barMin, ImVec2 barMax, ImVec2 textAt, std::int64_t received, std::int64_t total) {
    ImDrawList* drawList = ImGui::GetWindowDrawList();
    const bool known = total > 0;
    drawProgressBar(drawList, barMin, barMax, known ? static_cast<float>(received) / static_cast<float>(total) : 0.0f);
    uiThemeText(drawList, uiThemeFont(12.0f), textAt, kInstallFigures,
                formatBytes(received) + " / " + (known ? formatBytes(total) : "unknown"));
}
