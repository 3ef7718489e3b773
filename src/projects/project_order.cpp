#include "projects/project_order.h"

#include <algorithm>
#include <string_view>

#include "install/editor_location.h"
#include "projects/project_list.h"
#include "projects/project_search.h"
#include "shell/launcher_app.h"

namespace {

std::string columnText(const ProjectEntry& entry, const LauncherApp& app) {
    switch (app.sortColumn) {
    case ProjectSortColumn::Name:
        return entry.name;
    case ProjectSortColumn::Platform:
        return projectPlatformLabel(entry);
    case ProjectSortColumn::EditorVersion:
        return projectEditorLabel(entry, app);
    case ProjectSortColumn::LastOpened:
        break;
    }
    return {};
}

// The sort key of one row. `text` is the text of the sort column in lower case, so that a comparison of bytes ignores
// case.
struct SortKey {
    std::string_view text;
    std::int64_t lastOpened;
    std::int32_t index;
    bool favorite;
};

// Returns the rows of this frame: first those that the last frame showed, in its order, then the new ones. In most
// frames they are then already sorted.
std::vector<std::int32_t> orderedAsBefore(const std::vector<std::int32_t>& indices,
                                          const std::vector<std::int32_t>& before, std::size_t projectCount) {
    std::vector<bool> pending(projectCount);
    for (const std::int32_t index : indices)
        pending[static_cast<std::size_t>(index)] = true;
    std::vector<std::int32_t> ordered;
    ordered.reserve(indices.size());
    for (const std::vector<std::int32_t>* source : {&before, &indices}) {
        for (const std::int32_t index : *source) {
            const auto at = static_cast<std::size_t>(index);
            if (at >= projectCount || !pending[at]) continue;
            pending[at] = false;
            ordered.push_back(index);
        }
    }
    return ordered;
}

std::vector<SortKey> makeSortKeys(const LauncherApp& app, const std::vector<std::int32_t>& indices,
                                  const std::string& editorLabel, std::string& foldedTexts) {
    const std::vector<ProjectEntry>& projects = app.settings->projects();
    const std::string platformLabel = projectPlatformLabel({});
    const auto text = [&](const ProjectEntry& entry) -> std::string_view {
        switch (app.sortColumn) {
        case ProjectSortColumn::Name:
            return entry.name;
        case ProjectSortColumn::Platform:
            return entry.targetPlatform.empty() ? platformLabel : entry.targetPlatform;
        case ProjectSortColumn::EditorVersion:
            return entry.editorVersion.empty() ? editorLabel : entry.editorVersion;
        case ProjectSortColumn::LastOpened:
            break;
        }
        return {};
    };

    std::size_t bytes = 0;
    for (const std::int32_t index : indices)
        bytes += text(projects[static_cast<std::size_t>(index)]).size();
    foldedTexts.reserve(bytes); // reserve all memory now: the keys point into it, so it must not reallocate

    std::vector<SortKey> keys;
    keys.reserve(indices.size());
    for (const std::int32_t index : indices) {
        const ProjectEntry& entry = projects[static_cast<std::size_t>(index)];
        const std::size_t start = foldedTexts.size();
        appendFolded(text(entry), foldedTexts);
        keys.push_back({std::string_view(foldedTexts).substr(start), entry.lastOpened, index, entry.favorite});
    }
    return keys;
}

} // namespace

std::string defaultEditorLabel(const LauncherApp& app) {
    return editorLabel(app.install ? installedEditorVersion() : std::string());
}

std::string projectEditorLabel(const ProjectEntry& entry, const LauncherApp& app) {
    return entry.editorVersion.empty() ? defaultEditorLabel(app) : entry.editorVersion;
}

bool ProjectSortOrder::operator()(const ProjectEntry& a, const ProjectEntry& b) const {
    if (app.sortStarredFirst && a.favorite != b.favorite) return a.favorite;
    if (app.sortColumn != ProjectSortColumn::LastOpened) {
        const std::string textA = columnText(a, app), textB = columnText(b, app);
        const bool before = lessIgnoringCase(textA, textB), after = lessIgnoringCase(textB, textA);
        if (before != after) return app.sortAscending ? before : after;
    }
    return a.lastOpened > b.lastOpened; // newest first, even if sortAscending is true
}

std::vector<std::int32_t> displayedProjects(const LauncherApp& app, const std::string& editorLabel) {
    std::vector<std::int32_t> indices = filterProjects(app.settings->projects(), searchTerms(app.searchText));
    if (!app.sortStarredFirst && app.sortColumn == ProjectSortColumn::LastOpened) return indices;

    indices = orderedAsBefore(indices, app.displayedBefore, app.settings->projects().size());
    std::string foldedTexts;
    std::vector<SortKey> keys = makeSortKeys(app, indices, editorLabel, foldedTexts);
    const bool starredFirst = app.sortStarredFirst, ascending = app.sortAscending;
    const auto isBefore = [starredFirst, ascending](const SortKey& a, const SortKey& b) {
        if (starredFirst && a.favorite != b.favorite) return a.favorite;
        const int order = a.text.compare(b.text);
        if (order != 0) return ascending ? order < 0 : order > 0;
        if (a.lastOpened != b.lastOpened) return a.lastOpened > b.lastOpened;
        return a.index < b.index; // equal rows keep the stored order, not that of the last frame
    };
    if (!std::is_sorted(keys.begin(), keys.end(), isBefore)) std::sort(keys.begin(), keys.end(), isBefore);
    std::transform(keys.begin(), keys.end(), indices.begin(), [](const SortKey& key) { return key.index; });
    return indices;
}
