#include "install/install_widgets.h"

#include <imgui_internal.h>

#include "install/format_bytes.h"
#include "shell/widgets.h"
#include "ui/ui_palette.h"
#include "ui/ui_theme.h"

namespace {

constexpr ImU32 kCardFill = 0xFF222020;
constexpr ImU32 kTransferText = palette::kGrey63;

} // namespace

void drawInstallCard(ImVec2 min, ImVec2 max) {
    ImDrawList* drawList = ImGui::GetWindowDrawList();
    drawList->AddRectFilled(min, max, kCardFill, uiThemePx(palette::kRounding));
    drawList->AddRect(min, max, palette::kBorder, uiThemePx(palette::kRounding), 0, 1.0f);
}

void drawTransferProgress(ImVec2 barMin, ImVec2 barMax, ImVec2 textAt, std::int64_t received, std::int64_t total) {
    ImDrawList* drawList = ImGui::GetWindowDrawList();
    const bool known = total > 0;
    drawProgressBar(drawList, barMin, barMax, known ? static_cast<float>(received) / static_cast<float>(total) : 0.0f);
    uiThemeText(drawList, uiThemeFont(12.0f), textAt, kTransferText,
                formatBytes(received) + " / " + (known ? formatBytes(total) : "unknown"));
}
