// Adds a project that exists on disk: the user picks its file, the launcher lists it unless it is listed, and opens it.

#include <algorithm>
#include <filesystem>

#include "projects/project_list.h"
#include "shell/launcher_app.h"
#include "system/operating_system.h"
#include "system/path_text.h"

void LauncherApp::addProjectFromDisk() {
    if (refuseWhileEditorRuns(currentTimeSeconds())) return; // adding also opens

    std::string startFolder = settings->lastAddedLocation();
    if (startFolder.empty()) startFolder = userDocumentsDirectory();
    const std::string picked = pickProjectFile("Open VOLO Project", startFolder);
    if (picked.empty()) return;
    const std::filesystem::path file = std::filesystem::path(picked).lexically_normal();
    const std::string path = pathText(file);

    std::vector<ProjectEntry> projects = settings->projects();
    const auto listed =
        std::find_if(projects.begin(), projects.end(), [&](const ProjectEntry& entry) { return entry.path == path; });
    if (listed != projects.end()) {
        listed->lastOpened = currentTimeSeconds();
        sortByLastOpened(projects);
        settings->setProjects(projects);
        (void)settings->save();
        std::string unreported; // a failed open of a listed project shows no message here
        (void)openProjectPath(path, unreported);
        return;
    }

    ProjectEntry entry;
    entry.path = path;
    entry.name = pathText(file.stem());
    if (entry.name.empty()) entry.name = pathText(file.filename());
    entry.lastOpened = currentTimeSeconds();
    projects.insert(projects.begin(), entry);
    settings->setProjects(projects);
    settings->setLastAddedLocation(pathText(file.parent_path()));
    (void)settings->save(); // before the open, so that a project that fails to open stays listed
    noticeText.clear();
    std::string errorText;
    if (!openProjectPath(path, errorText)) showOpenError(errorText);
}
