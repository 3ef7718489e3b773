#include "projects/project_list.h"

#include <algorithm>
#include <filesystem>

#include "projects/project_on_disk.h"

namespace {

// Returns the same as tolower in the "C" locale. The compiler can inline this function, but not tolower. A search calls
// it for each byte of all names and paths in every frame.
constexpr char folded(char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

} // namespace

void sortByLastOpened(std::vector<ProjectEntry>& projects) {
    std::stable_sort(projects.begin(), projects.end(),
                     [](const ProjectEntry& a, const ProjectEntry& b) { return a.lastOpened > b.lastOpened; });
}

void appendFolded(std::string_view text, std::string& out) {
    const std::size_t start = out.size();
    out.resize(start + text.size());
    std::transform(text.begin(), text.end(), out.begin() + static_cast<std::ptrdiff_t>(start), folded);
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
