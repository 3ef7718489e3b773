#pragma once

// Decides which projects a search finds. Pure functions. Any thread.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "projects/project_entry.h"

// Splits a search text at spaces and tabs. Converts A to Z to lower case.
[[nodiscard]] std::vector<std::string> searchTerms(std::string_view text);

// Returns the indices of the entries that match all terms, in list order. An entry matches a term if its name or its
// path contains the term. Terms must be in lower case.
[[nodiscard]] std::vector<std::int32_t> filterProjects(const std::vector<ProjectEntry>& projects,
                                                       const std::vector<std::string>& terms);
