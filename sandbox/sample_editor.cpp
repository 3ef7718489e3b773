// Shows a project file in a window. This is the sample editor that the sandbox's launcher installs and starts. Like the
// real editor, it runs in the folder of its executable, with the project file as its only argument.

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <system_error>
#include <vector>

#include <imgui.h>

#include "system/operating_system.h"
#include "ui/ui_host.h"
#include "ui/ui_theme.h"

namespace {

struct Line {
    std::string text;
    float fontSize;
    bool muted;
};

std::vector<Line> describeProject(const std::string& projectFile) {
    std::error_code ignored;
    const std::filesystem::path path(projectFile);
    std::ifstream file(path, std::ios::binary);
    const std::string contents{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    return {
        {projectFile.empty() ? "No project" : path.stem().string(), 24.0f, false},
        {projectFile, 14.0f, true},
        {file ? contents : "This file cannot be read.", 18.0f, false},
        {"Working directory: " + std::filesystem::current_path(ignored).string(), 14.0f, true},
    };
}

void drawProject(const std::vector<Line>& lines) {
    const ImGuiViewport* viewport = ImGui::GetMainViewport();
    ImDrawList* drawList = ImGui::GetBackgroundDrawList();
    const float margin = uiThemePx(32.0f);
    const float width = viewport->WorkSize.x - 2.0f * margin;
    ImVec2 at = {viewport->WorkPos.x + margin, viewport->WorkPos.y + margin};
    for (const Line& line : lines) {
        ImFont* font = uiThemeFont(line.fontSize);
        uiThemeTextWrapped(drawList, font, at, line.muted ? uiThemeMutedForeground() : uiThemeForeground(), line.text,
                           width, 0.0f);
        at.y += uiThemeTextSize(font, line.text, width).y + uiThemePx(20.0f);
    }
}

} // namespace

int main(int count, char** values) {
    const std::vector<Line> lines = describeProject(count > 1 ? values[1] : "");
    const std::string font = (std::filesystem::path(launcherDirectory()) / "Roboto-Medium.ttf").string();
    UiHostDesc desc;
    desc.title = "VOLO Editor";
    desc.width = 760;
    desc.height = 420;
    desc.minWidth = 400;
    desc.minHeight = 300;
    desc.fontPath = font.c_str();

    UiHost host;
    std::string errorText;
    if (!host.initialize(desc, errorText)) {
        std::fprintf(stderr, "VOLO Editor: %s\n", errorText.c_str());
        return 1;
    }
    uiThemeInitialize(host.integration);
    while (host.beginFrame()) {
        uiThemeSetScale(host.dpiScale());
        uiThemeTick(host.deltaSeconds);
        uiThemeApplyStyle();
        drawProject(lines);
        float clearColour[4];
        uiThemeBackgroundFloat(clearColour);
        if (!host.presentFrame(clearColour)) break;
    }
    host.shutdown();
    return 0;
}
