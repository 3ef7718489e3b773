// Draws the screen that is shown if there is no usable configuration: one card with a message that explains what is
// missing. The screen has no controls.

#include <imgui_internal.h>

#include "shell/launcher_app.h"
#include "ui/ui_theme.h"

namespace {

constexpr ImVec2 kCardSize = {520.0f, 240.0f};
constexpr float kCardRounding = 12.0f;
constexpr float kInset = 28.0f;
constexpr float kTitleTop = 24.0f;
constexpr float kBodyTop = 64.0f;
constexpr float kFooterAboveBottom = 56.0f;
constexpr float kTitleTracking = -0.25f;
constexpr float kLineGap = 4.0f;

} // namespace

void LauncherApp::drawNotConfiguredScreen() {
    ImDrawList* drawList = ImGui::GetWindowDrawList();
    const ImVec2 size = uiThemePx(kCardSize);
    const ImVec2 min = uiThemeWholePixels(ImGui::GetWindowPos() + (ImGui::GetWindowSize() - size) * 0.5f);
    const ImVec2 max = min + size;
    const float left = min.x + uiThemePx(kInset);
    const float wrapWidth = uiThemePx(kCardSize.x - 2.0f * kInset);

    uiThemeRoundedPanel(drawList, min, max, uiThemeCard(), uiThemePx(kCardRounding));
    uiThemeBorder(drawList, min, max, uiThemePx(kCardRounding), 1.0f, uiThemeBorder());
    uiThemeTextTracked(drawList, uiThemeFont(20.0f), {left, min.y + uiThemePx(kTitleTop)}, uiThemeForeground(),
                       "Launcher not configured", kTitleTracking);
    uiThemeTextWrapped(drawList, uiThemeFont(14.0f), {left, min.y + uiThemePx(kBodyTop)}, uiThemeMutedForeground(),
                       config->message, wrapWidth, uiThemePx(kLineGap));
    uiThemeTextWrapped(drawList, uiThemeFont(12.0f), {left, max.y - uiThemePx(kFooterAboveBottom)},
                       uiThemeMutedForeground(), "You can close this window once the configuration is in place.",
                       wrapWidth, uiThemePx(kLineGap));
}
