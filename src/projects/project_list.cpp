#include "projects/project_list.h"

#include <algorithm>
#include <filesystem>

#include "projects/project_file.h"

namespace {

// Returns the same as tolower in the default locale. It is defined here so that the compiler can inline it: a search
// calls it for each byte of all names and paths in every frame.
constexpr char folded(char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

constexpr bool separatesTerms(char letter) {
    return letter == ' ' || letter == '\t';
}

} // namespace

void sortByLastOpened(std::vector<ProjectEntry>& projects) {
    std::stable_sort(projects.begin(), projects.end(),
                     [](const ProjectEntry& a, const ProjectEntry& b) { return a.lastOpened > b.lastOpened; });
}

std::vector<std::string> searchTerms(std::string_view text) {
    std::vector<std::string> terms;
    bool inside = false;
    for (const char letter : text) {
        if (!separatesTerms(letter)) {
            if (!inside) terms.emplace_back();
            terms.back() += folded(letter);
        }
        inside = !separatesTerms(letter);
    }
    return terms;
}

void appendFolded(std::string_view text, std::string& out) {
    const std::size_t start = out.size();
    out.resize(start + text.size());
    std::transform(text.begin(), text.end(), out.begin() + static_cast<std::ptrdiff_t>(start), folded);
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

bool lessIgnoringCase(std::string_view a, std::string_view b) {
    return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(), [](char left, char right) {
        return static_cast<unsigned char>(folded(left)) < static_cast<unsigned char>(folded(right));
    });
}

std::string projectPlatformLabel(const ProjectEntry& entry) {
    return entry.targetPlatform.empty() ? "Windows x86_64" : entry.targetPlatform;
}

bool isProjectMissing(const std::string& path) {
    std::error_code error;
    // status() returns the type `none` when it fails.
    const std::filesystem::file_type type = std::filesystem::status(projectDirectory(path), error).type();
    return type == std::filesystem::file_type::not_found || type == std::filesystem::file_type::none;
}
