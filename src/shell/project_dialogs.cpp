// Draws the two modal popups. They are opened and drawn in the root window, so that their identifiers are always the
// same.

#include <string>

#include <imgui.h>

#include "shell/launcher_app.h"
#include "shell/widgets.h"
#include "system/operating_system.h"
#include "ui/ui_keyboard.h"
#include "ui/ui_popups.h"
#include "ui/ui_theme.h"

namespace {

constexpr const char* kCreatePopup = "Create a new project";
constexpr const char* kOpenErrorPopup = "Cannot open project";

constexpr float kBodyWidth = 460.0f;
constexpr float kIntroHeight = 36.0f;
constexpr float kIntroLineGap = 4.0f;
constexpr float kLocationWidth = 360.0f;
constexpr float kBrowseWidth = 94.0f;
constexpr float kButtonWidth = 120.0f;
constexpr float kCreateWidth = 150.0f;

void gap(float height) {
    ImGui::Dummy({0.0f, uiThemePx(height)});
}

bool beginModal(const char* name, bool& requested) {
    if (requested) {
        ImGui::OpenPopup(name);
        requested = false;
    }
    const ImGuiViewport* viewport = ImGui::GetMainViewport();
    ImGui::SetNextWindowPos(viewport->GetCenter(), ImGuiCond_Appearing, {0.5f, 0.5f});
    return uiThemeBeginModal(name);
}

void drawFieldLabel(const char* label) {
    ImFont* font = uiThemeFont(11.0f);
    ImGui::PushFont(font, uiThemeFontSize(font));
    ImGui::PushStyleColor(ImGuiCol_Text, uiThemeMutedForeground());
    ImGui::TextUnformatted(label);
    ImGui::PopStyleColor();
    ImGui::PopFont();
}

} // namespace

void LauncherApp::drawProjectDialogs() {
    const bool creating = beginModal(kCreatePopup, createProjectRequested);
    if (creating) {
        drawCreateProjectPopup();
        uiThemeEndPopup();
    }
    // Do not open the error popup while the creation popup is open: that would close the creation popup and discard its
    // text.
    if (!creating && beginModal(kOpenErrorPopup, openErrorRequested)) {
        drawOpenErrorPopup();
        uiThemeEndPopup();
    }
}

void LauncherApp::drawCreateProjectPopup() {
    uiThemeTextWrapped(ImGui::GetWindowDrawList(), uiThemeFont(14.0f), ImGui::GetCursorScreenPos(),
                       uiThemeMutedForeground(),
                       "Choose a name and location. VOLO will create a project folder with a .zantorproj project file.",
                       uiThemePx(kBodyWidth), uiThemePx(kIntroLineGap));
    gap(kIntroHeight);

    drawFieldLabel("PROJECT NAME");
    ImGui::SetNextItemWidth(uiThemePx(kBodyWidth));
    if (ImGui::IsWindowAppearing()) ImGui::SetKeyboardFocusHere();
    drawTextField("##NewProjectName", "My VOLO project", newProjectName, sizeof newProjectName);
    ImGuiID fieldToReturnTo = ImGui::GetItemID();
    uiThemeFocusRingOfItem();

    gap(8.0f);
    drawFieldLabel("LOCATION");
    ImGui::SetNextItemWidth(uiThemePx(kLocationWidth));
    drawTextField("##NewProjectLocation", "", newProjectLocation, sizeof newProjectLocation);
    if (ImGui::IsItemDeactivated()) fieldToReturnTo = ImGui::GetItemID();
    uiThemeFocusRingOfItem();
    ImGui::SameLine(0.0f, uiThemePx(kBodyWidth - kLocationWidth - kBrowseWidth));
    if (ImGui::Button("Browse", {uiThemePx(kBrowseWidth), 0.0f})) {
        const std::string folder = browseForFolder("Choose project location", newProjectLocation);
        if (!folder.empty()) copyToBuffer(folder, newProjectLocation);
    }
    bool onButton = uiThemeFocusRingOfItem();

    gap(6.0f);
    const std::string preview = std::string(newProjectLocation) + "/" + newProjectName;
    uiThemeParagraph(preview, uiThemeMutedForeground(), uiThemePx(kBodyWidth));
    if (!createProjectError.empty()) uiThemeParagraph(createProjectError, uiThemeDestructive(), uiThemePx(kBodyWidth));

    gap(12.0f);
    bool closes = ImGui::Button(kCancelLabel, {uiThemePx(kButtonWidth), 0.0f}) || uiThemeCancelKeyPressed();
    onButton |= uiThemeFocusRingOfItem();
    ImGui::SameLine();
    const bool confirmed = uiThemeDefaultButton("Create project", uiThemePx(kCreateWidth));
    onButton |= uiThemeFocusRingOfItem();
    const bool entered = !onButton && uiThemeConfirmKeyPressed(); // if a button has the focus, Enter presses it
    if ((confirmed || entered) && !closes) {
        createProject();
        closes = createProjectError.empty();
        // Enter made the text field inactive. If the creation failed, make it active again.
        if (entered && !closes) activateTextField(fieldToReturnTo, true);
    }
    if (closes) ImGui::CloseCurrentPopup();
}

void LauncherApp::drawOpenErrorPopup() {
    uiThemeParagraph(openErrorMessage, uiThemeForeground(), uiThemePx(kBodyWidth));
    gap(12.0f);
    const bool confirmed = uiThemeDefaultButton("OK", uiThemePx(kButtonWidth));
    uiThemeFocusRingOfItem();
    copyOnCtrlC(openErrorMessage);
    if (confirmed || uiThemeConfirmKeyPressed() || uiThemeCancelKeyPressed()) ImGui::CloseCurrentPopup();
}
