// Adds a project that exists on disk: the user picks its file, and the launcher adds it to the list and opens it. If
// the list already contains the project, the launcher only opens it.

#include <algorithm>
#include <filesystem>

#include "projects/project_list.h"
#include "shell/launcher_app.h"
#include "system/operating_system.h"
#include "system/path_text.h"

void LauncherApp::addProjectFromDisk() {
    if (refuseWhileEditorRuns(currentTimeSeconds())) return; // because a project that is added is also opened

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
        std::string unreported; // if the project was already listed, a failed open shows no message
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
    (void)settings->save(); // save before opening: a project that fails to open stays in the list
    noticeText.clear();
    std::string errorText;
    if (!openProjectPath(path, errorText)) showOpenError(errorText);
}
