#include "projects/project_search.h"

#include <algorithm>

#include "projects/project_list.h"

namespace {

constexpr bool separatesTerms(char letter) {
    return letter == ' ' || letter == '\t';
}

} // namespace

std::vector<std::string> searchTerms(std::string_view text) {
    std::vector<std::string> terms;
    bool inside = false;
    for (const char letter : text) {
        if (!separatesTerms(letter)) {
            if (!inside) terms.emplace_back();
            appendFolded({&letter, 1}, terms.back());
        }
        inside = !separatesTerms(letter);
    }
    return terms;
}

std::vector<std::int32_t> filterProjects(const std::vector<ProjectEntry>& projects,
                                         const std::vector<std::string>& terms) {
    std::vector<std::int32_t> kept;
    kept.reserve(projects.size());
    std::string name, path; // outside the loop, so that their memory is reused
    for (std::size_t index = 0; index < projects.size(); ++index) {
        bool matches = true;
        if (!terms.empty()) {
            name.clear();
            path.clear();
            appendFolded(projects[index].name, name);
            appendFolded(projects[index].path, path);
            matches = std::all_of(terms.begin(), terms.end(), [&](const std::string& term) {
                return name.find(term) != std::string::npos || path.find(term) != std::string::npos;
            });
        }
        if (matches) kept.push_back(static_cast<std::int32_t>(index));
    }
    return kept;
}
