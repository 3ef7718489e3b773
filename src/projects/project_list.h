#pragma once

// Rules for ordering, searching and labelling the project list. Pure functions, except that isProjectMissing reads the
// file system. Any thread.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "projects/project_entry.h"

// Sorts into the stored order: newest first. Entries of the same second keep their order.
void sortByLastOpened(std::vector<ProjectEntry>& projects);

// Splits a search text at spaces and tabs, and converts A to Z to lower case.
[[nodiscard]] std::vector<std::string> searchTerms(std::string_view text);

// The indices, in list order, of the entries whose name or path contains every term. Terms must be in lower case.
[[nodiscard]] std::vector<std::int32_t> filterProjects(const std::vector<ProjectEntry>& projects,
                                                       const std::vector<std::string>& terms);

// Compares byte by byte, with A to Z as lower case. A prefix comes before the longer text.
[[nodiscard]] bool lessIgnoringCase(std::string_view a, std::string_view b);

// Appends the text to `out` with A to Z in lower case. All other bytes stay unchanged.
void appendFolded(std::string_view text, std::string& out);

// The text of the Platform column.
[[nodiscard]] std::string projectPlatformLabel(const ProjectEntry& entry);

// True when the project's folder does not exist or cannot be queried. A folder without its project file is not missing.
[[nodiscard]] bool isProjectMissing(const std::string& path);
