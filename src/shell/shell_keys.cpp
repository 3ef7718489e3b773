// Handles the keys that work on all screens after the sign-in. projects/projects_keys_screen.cpp handles the keys of
// the Projects screen.

#include <imgui.h>

#include "shell/launcher_app.h"

// ImGui::Shortcut returns false while an open popup or a text field uses the key.
void LauncherApp::handleShellKeys() {
    if (ImGui::Shortcut(ImGuiMod_Ctrl | ImGuiKey_N)) {
        activeTab = LauncherTab::Projects; // the screen that will show the new project
        beginNewProject();
    }
    if (ImGui::Shortcut(ImGuiMod_Ctrl | ImGuiKey_1)) activeTab = LauncherTab::Projects;
    if (ImGui::Shortcut(ImGuiMod_Ctrl | ImGuiKey_2)) activeTab = LauncherTab::Installs;
    if (activeTab == LauncherTab::Projects && ImGui::Shortcut(ImGuiMod_Ctrl | ImGuiKey_Z)) restoreRemovedProject();
}
