#pragma once

// Computes the order in which the Projects screen shows the list. The order is computed in every frame and never
// stored. Main thread.

#include <cstdint>
#include <string>
#include <vector>

#include "projects/project_entry.h"

class LauncherApp;

// Returns the text of the Editor column: the version in the entry, or defaultEditorLabel if the entry has none.
[[nodiscard]] std::string projectEditorLabel(const ProjectEntry& entry, const LauncherApp& app);

// Returns the label of the installed editor. Call it only once per frame, because it reads a file.
[[nodiscard]] std::string defaultEditorLabel(const LauncherApp& app);

// Returns true if `a` is shown before `b` with the current sort controls. displayedProjects uses the same rule, but
// computes the texts once instead of in each comparison.
struct ProjectSortOrder {
    const LauncherApp& app;
    bool operator()(const ProjectEntry& a, const ProjectEntry& b) const;
};

// Returns the list indices of the rows to show, in display order: filtered by the search text, then sorted. Equal rows
// keep their order. `editorLabel` is the result of defaultEditorLabel.
[[nodiscard]] std::vector<std::int32_t> displayedProjects(const LauncherApp& app, const std::string& editorLabel);
