#pragma once

// Orders and labels the entries of the project list. All functions are pure, except isProjectMissing, which reads the
// file system. Any thread.

#include <string>
#include <string_view>
#include <vector>

#include "projects/project_entry.h"

// Sorts by lastOpened, newest first. The stored list has this order. Entries with the same time keep their order.
void sortByLastOpened(std::vector<ProjectEntry>& projects);

// True if `a` comes before `b`. Compares byte by byte and treats A to Z as lower case. A prefix comes before the longer
// text.
[[nodiscard]] bool lessIgnoringCase(std::string_view a, std::string_view b);

// Appends the text to `out` with A to Z in lower case. All other bytes stay unchanged.
void appendFolded(std::string_view text, std::string& out);

// Returns the text of the Platform column.
[[nodiscard]] std::string projectPlatformLabel(const ProjectEntry& entry);

// True if the project's folder does not exist or cannot be queried. False if only the project file is missing.
[[nodiscard]] bool isProjectMissing(const std::string& path);
