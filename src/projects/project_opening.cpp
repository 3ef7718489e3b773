// Opens a project in the editor. If no editor is installed, installs it first and opens the project afterwards.

#include <algorithm>
#include <filesystem>
#include <utility>

#include "install/editor_location.h"
#include "install/update_manifest.h"
#include "projects/project_list.h"
#include "projects/project_on_disk.h"
#include "shell/launcher_app.h"
#include "system/operating_system.h"
#include "system/path_text.h"

namespace {

// For this time after it has started an editor, the launcher assumes that the editor runs: the process list may not
// contain it yet.
constexpr std::int64_t kLaunchGraceSeconds = 2;

constexpr const char* kEditorAlreadyOpen = "VOLO Editor is already open.";

bool updateServerConfigured(const LauncherApp& app) {
    return app.install && isManifestUrlConfigured(app.config->editorUpdateManifestUrl);
}

} // namespace

bool LauncherApp::refuseWhileEditorRuns(std::int64_t now) {
    if (!isEditorRunning() && now - lastEditorLaunchTime >= kLaunchGraceSeconds) return false;
    noticeText = kEditorAlreadyOpen;
    return true;
}

void LauncherApp::showOpenError(const std::string& message) {
    if (message.empty()) return; // not an error: the project waits for an install, and the notice says so
    openErrorMessage = message;
    openErrorRequested = true;
}

bool LauncherApp::openProjectPath(const std::string& path, std::string& errorText) {
    if (isEditorRunning()) {
        errorText = kEditorAlreadyOpen;
        return false;
    }
    const std::string executable = resolveEditorExecutable(*this);
    if (executable.empty()) {
        activeTab = LauncherTab::Installs;
        if (!updateServerConfigured(*this)) {
            errorText = "VOLO Editor is not installed and automatic installation is not configured.";
            return false;
        }
        pendingOpenProjectPath = path;
        const EditorInstallStatus status = install->status();
        if (status == EditorInstallStatus::Idle || status == EditorInstallStatus::Failed) install->startUpdate();
        noticeText = "Installing VOLO Editor before opening this project…";
        return false;
    }
    if (isProjectMissing(path)) {
        errorText = "The project no longer exists:\n" + path;
        return false;
    }
    lastEditorLaunchTime = currentTimeSeconds(); // set before the attempt, so that a failed start counts too
    return launchEditorProcess(executable, path, pathText(std::filesystem::path(executable).parent_path()), errorText);
}

void LauncherApp::openProjectRow(std::int32_t index) {
    std::vector<ProjectEntry> projects = settings->projects();
    if (index < 0 || static_cast<std::size_t>(index) >= projects.size()) return;
    if (!pendingOpenProjectPath.empty()) {
        activeTab = LauncherTab::Installs;
        return;
    }
    const std::int64_t now = currentTimeSeconds();
    if (refuseWhileEditorRuns(now)) return;

    ProjectEntry& entry = projects[static_cast<std::size_t>(index)];
    std::string errorText;
    if (!openProjectPath(entry.path, errorText)) {
        showOpenError(errorText);
        return;
    }
    lastEditorLaunchTime = now;
    entry.lastOpened = now;
    keepAfterOpening(std::move(projects));
}

void LauncherApp::servicePendingOpen() {
    if (pendingOpenProjectPath.empty() || !install) return;
    const EditorInstallStatus status = install->status();
    if (status == EditorInstallStatus::Failed) {
        const std::string message = install->statusMessage();
        showOpenError(message.empty() ? "VOLO Editor could not be installed automatically." : message);
        pendingOpenProjectPath.clear();
        noticeText.clear();
        return;
    }
    if (status != EditorInstallStatus::Installed && status != EditorInstallStatus::InstalledOffline) return;

    const std::string path = std::exchange(pendingOpenProjectPath, {});
    std::string errorText;
    if (!openProjectPath(path, errorText)) { // if no editor was found, the project is pending again
        showOpenError(errorText);
        return;
    }
    std::vector<ProjectEntry> projects = settings->projects();
    const auto entry = std::find_if(projects.begin(), projects.end(),
                                    [&](const ProjectEntry& candidate) { return candidate.path == path; });
    if (entry != projects.end()) entry->lastOpened = currentTimeSeconds();
    keepAfterOpening(std::move(projects));
}

void LauncherApp::keepAfterOpening(std::vector<ProjectEntry> projects) {
    sortByLastOpened(projects);
    settings->setProjects(projects);
    (void)settings->save();
    noticeText.clear();
}
