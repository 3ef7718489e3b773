// Implements the logic of the popup "Create a new project": its initial values, and the action of its button.
// project_on_disk.cpp makes the folder and the file.

#include <filesystem>

#include "projects/project_on_disk.h"
#include "shell/launcher_app.h"
#include "system/operating_system.h"
#include "system/path_text.h"

void LauncherApp::beginNewProject() {
    createProjectRequested = true;
    copyToBuffer("", newProjectName);
    std::string location = settings->defaultLocation();
    if (location.empty()) location = pathText(std::filesystem::path(userDocumentsDirectory()) / "VOLO Projects");
    copyToBuffer(location, newProjectLocation);
    createProjectError.clear(); // cleared only here: an old message stays until the popup opens again
}

void LauncherApp::createProject() {
    std::string name = newProjectName;
    name.erase(name.find_last_not_of(' ') + 1);
    if (name.empty()) {
        createProjectError = "Enter a project name.";
        return;
    }
    if (name.find_first_of("\"*/:<>?\\|") != std::string::npos) {
        createProjectError = "The project name contains characters that are not allowed.";
        return;
    }
    const std::string location = newProjectLocation;
    if (location.empty()) {
        createProjectError = "Choose a location for the project.";
        return;
    }

    ProjectEntry entry;
    entry.name = name;
    entry.path = createProjectOnDisk(location, name, createProjectError);
    if (entry.path.empty()) return;
    entry.lastOpened = currentTimeSeconds();

    std::vector<ProjectEntry> projects = settings->projects();
    projects.insert(projects.begin(), entry);
    settings->setProjects(projects);
    settings->setLastAddedLocation(location);
    if (settings->defaultLocation().empty()) settings->setDefaultLocation(location);
    (void)settings->save(); // a failed save shows no message; the list in memory still has the project
    createProjectRequested = false;
    projectToFocus = entry.path;
    noticeText.clear();
}
