// Handles the keys of the Projects screen: typing starts a search; Enter, Ctrl+C and Delete act on a row.
// shell/shell_keys.cpp handles the keys that work on all screens, and projects_screen.cpp the keys inside the search
// field.

#include <algorithm>
#include <string>

#include <imgui_internal.h>

#include "projects/project_list.h"
#include "projects/projects_screen.h"
#include "shell/widgets.h"
#include "ui/ui_keyboard.h"

void LauncherApp::handleRowKeys(const ProjectRows& rows, RowRequest& request) {
    const auto pathOf = [&](std::int32_t index) { return settings->projects()[static_cast<std::size_t>(index)].path; };
    if (rows.openFirst && !isProjectMissing(pathOf(rows.indices.front()))) request.openIndex = rows.indices.front();
    if (request.focusedIndex < 0) return;
    copyOnCtrlC(pathOf(request.focusedIndex));
    if (!ImGui::Shortcut(ImGuiKey_Delete)) return;
    request.removeIndex = request.focusedIndex;
    // Move the focus to the next row. If the removed row is the last one, move the focus to the row above.
    auto row = std::find(rows.indices.begin(), rows.indices.end(), request.focusedIndex);
    if (row + 1 != rows.indices.end()) {
        projectToFocus = pathOf(row[1]);
    } else if (row != rows.indices.begin()) {
        projectToFocus = pathOf(row[-1]);
    }
}

// Starts a search when the user types while no control is active. Returns true if the search field must be activated.
// Appends the typed characters to the search text itself: Dear ImGui 1.92 drops the characters that arrive between
// ActivateItemByID and the frame in which the field is active.
bool LauncherApp::startSearchByTyping() {
    const ImGuiIO& io = ImGui::GetIO();
    const bool listens = ImGui::GetActiveID() == 0 &&
                         ImGui::IsWindowFocused(ImGuiFocusedFlags_ChildWindows | ImGuiFocusedFlags_NoPopupHierarchy);
    // A leading space does not start a search, because Space presses the focused control. Ctrl or Alt alone is a key
    // command, but both together are AltGr, which types characters.
    if (!listens || io.InputQueueCharacters.empty() || io.InputQueueCharacters[0] == ' ' || io.KeyCtrl != io.KeyAlt) {
        return false;
    }
    std::string typed = searchStartedByTyping ? searchText : "";
    for (const ImWchar character : io.InputQueueCharacters) {
        char utf8[5];
        ImTextCharToUtf8(utf8, character);
        typed += utf8;
    }
    copyToBuffer(typed, searchText);
    searchStartedByTyping = true;
    return true;
}
