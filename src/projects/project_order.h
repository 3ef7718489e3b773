#pragma once

// The order in which the Projects screen shows the list: worked out anew every frame, never stored. Frame thread.

#include <cstdint>
#include <string>
#include <vector>

#include "projects/project_entry.h"

class LauncherApp;

// The Editor column. Entries without a version of their own all show defaultEditorLabel, the version that the launcher
// manages now; that one reads the version marker, so whoever labels many entries asks once.
std::string projectEditorLabel(const ProjectEntry& entry, const LauncherApp& app);
std::string defaultEditorLabel(const LauncherApp& app);

// Whether one entry is shown before another, by the sort controls as they are now. This is the rule; displayedProjects
// gives the same order without asking it for every pair.
struct ProjectSortOrder {
    const LauncherApp& app;
    bool operator()(const ProjectEntry& a, const ProjectEntry& b) const;
};

// The indices of the rows to show, in order: filtered by the search text and stable-sorted by ProjectSortOrder.
// `editorLabel` is what defaultEditorLabel gives.
std::vector<std::int32_t> displayedProjects(const LauncherApp& app, const std::string& editorLabel);
