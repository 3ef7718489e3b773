#pragma once

// The rules by which the project list is ordered, searched and labelled. Pure functions of what they are given; only
// isProjectMissing looks at the disk. Frame thread.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "projects/project_entry.h"

// The stored order: newest first, entries of the same second keep their order.
void sortByLastOpened(std::vector<ProjectEntry>& projects);

// The words of a search text in lower case; spaces and tabs separate. A blank text has none.
std::vector<std::string> searchTerms(std::string_view text);

// The indices of the entries in which every term occurs, in the name or in the path, in list order.
std::vector<std::int32_t> filterProjects(const std::vector<ProjectEntry>& projects,
                                         const std::vector<std::string>& terms);

// Byte by byte, A to Z folded; a text comes before its own continuation.
bool lessIgnoringCase(std::string_view a, std::string_view b);

// The text with A to Z in lower case and every other byte as it stands.
void appendFolded(std::string_view text, std::string& out);

std::string projectPlatformLabel(const ProjectEntry& entry);

// Whether the project's folder is gone. A folder without its project file is not missing.
bool isProjectMissing(const std::string& path);
