#pragma once

// The order in which the Projects screen shows the list. Computed in every frame and never stored. Main thread.

#include <cstdint>
#include <string>
#include <vector>

#include "projects/project_entry.h"

class LauncherApp;

// The text of the Editor column: the entry's own version, else defaultEditorLabel.
[[nodiscard]] std::string projectEditorLabel(const ProjectEntry& entry, const LauncherApp& app);

// The label of the editor that the launcher manages now. Reads the version marker from disk: call it once per frame.
[[nodiscard]] std::string defaultEditorLabel(const LauncherApp& app);

// True when `a` is shown before `b` under the current sort controls. displayedProjects sorts by the same rule, but
// prepares the texts once instead of in every comparison.
struct ProjectSortOrder {
    const LauncherApp& app;
    bool operator()(const ProjectEntry& a, const ProjectEntry& b) const;
};

// The list indices of the rows to show, in display order: filtered by the search text, then stable-sorted.
// `editorLabel` is the result of defaultEditorLabel.
[[nodiscard]] std::vector<std::int32_t> displayedProjects(const LauncherApp& app, const std::string& editorLabel);
