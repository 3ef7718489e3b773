#pragma once

// Rules for ordering, searching and labelling the project list. Pure functions, except that isProjectMissing reads the
// file system. Any thread.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "projects/project_entry.h"

// Sorts into the stored order, newest first. Entries with the same time keep their order.
void sortByLastOpened(std::vector<ProjectEntry>& projects);

// Splits a search text at spaces and tabs. Converts A to Z to lower case.
[[nodiscard]] std::vector<std::string> searchTerms(std::string_view text);

// Returns the indices of the entries that contain each term in their name or path, in list order. Terms must be in
// lower case.
[[nodiscard]] std::vector<std::int32_t> filterProjects(const std::vector<ProjectEntry>& projects,
                                                       const std::vector<std::string>& terms);

// True if `a` comes before `b`. Compares byte by byte and treats A to Z as lower case. A prefix comes before the longer
// text.
[[nodiscard]] bool lessIgnoringCase(std::string_view a, std::string_view b);

// Appends the text to `out` with A to Z in lower case. All other bytes stay unchanged.
void appendFolded(std::string_view text, std::string& out);

// Returns the text of the Platform column.
[[nodiscard]] std::string projectPlatformLabel(const ProjectEntry& entry);

// True if the project's folder does not exist or cannot be queried. False if only the project file is missing.
[[nodiscard]] bool isProjectMissing(const std::string& path);
