// Removes a project from the list, and restores the one that was removed last. The project's files do not change.

#include <algorithm>

#include "projects/project_list.h"
#include "shell/launcher_app.h"

void LauncherApp::removeProject(std::int32_t index) {
    std::vector<ProjectEntry> projects = settings->projects();
    if (index < 0 || static_cast<std::size_t>(index) >= projects.size()) return;
    removedProject = projects[static_cast<std::size_t>(index)];
    projects.erase(projects.begin() + index);
    settings->setProjects(projects);
    (void)settings->save();
}

void LauncherApp::restoreRemovedProject() {
    if (!removedProject) return;
    std::vector<ProjectEntry> projects = settings->projects();
    const bool listedAgain = std::any_of(projects.begin(), projects.end(),
                                         [&](const ProjectEntry& entry) { return entry.path == removedProject->path; });
    if (!listedAgain) {
        projectToFocus = removedProject->path;
        projects.push_back(*removedProject);
        sortByLastOpened(projects);
        settings->setProjects(projects);
        (void)settings->save();
    }
    removedProject.reset();
}
