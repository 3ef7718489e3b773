// Tests the order and the search of the project list.

#include <algorithm>

#include "projects/project_list.h"
#include "projects/project_on_disk.h"
#include "projects/project_order.h"
#include "projects/project_search.h"
#include "projects_fixture.h"

using ProjectOrder = ProjectsTest;
using Indices = std::vector<std::int32_t>;

TEST_F(ProjectOrder, FollowsTheSortControlsAndTheSearch) {
    using enum ProjectSortColumn;
    app->settings->setProjects({{"Alpha", "/foo", "", "", 80}, // same name as "alpha" without case, and older
                                {"alpha", "/foo", "windows Y", "", 90, true},
                                {"abcd", "/foo", "", "volo d", 70},
                                {"abc", "/bar", "Linux", "VOLO 2.0", 60},
                                {"\xC3\xBC", "/bar", "", "", 50, true}, // bytes compare as unsigned
                                {"_", "/bar", "", "9", 40}});           // before all letters, which fold to lower case
    const struct {
        ProjectSortColumn column;
        bool ascending, starredFirst;
        const char* search;
        const char* editorVersion;
        Indices rows;
    } cases[] = {
        {LastOpened, true, false, " \tFOO\t abc", "", {2}},
        {LastOpened, false, true, " \t ", "", {1, 4, 0, 2, 3, 5}},
        {Name, true, false, "", "", {5, 3, 2, 1, 0, 4}},
        {Name, false, false, "", "", {4, 1, 0, 2, 3, 5}},
        {Name, false, true, "", "", {4, 1, 0, 2, 3, 5}},
        {Name, true, false, "alpha linux", "", {}},
        {Platform, true, false, "", "", {3, 0, 2, 4, 5, 1}},
        {EditorVersion, true, false, "", "", {5, 3, 2, 1, 0, 4}},
        {EditorVersion, true, false, "", "2.0", {5, 1, 0, 3, 4, 2}},
    };
    app->displayedBefore = {5, 4, 3, 99}; // 99: index of a project that was removed since the last frame
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.rows));
        app->sortColumn = c.column;
        app->sortAscending = c.ascending;
        app->sortStarredFirst = c.starredFirst;
        copyToBuffer(c.search, app->searchText);
        folder.write("launcher/here/editor/.zantor_editor_version", c.editorVersion);
        EXPECT_EQ(displayedProjects(*app, defaultEditorLabel(*app)), c.rows);
        app->displayedBefore = c.rows; // must not influence the next case
        Indices byRule = filterProjects(projects(), searchTerms(c.search));
        std::stable_sort(byRule.begin(), byRule.end(), [&](std::int32_t a, std::int32_t b) {
            return ProjectSortOrder{*app}(projects().at(std::size_t(a)), projects().at(std::size_t(b)));
        });
        EXPECT_EQ(byRule, c.rows);
    }
}

TEST(ProjectFolder, IsMissingOnlyWhenTheFolderIsGone) {
    for (const std::string path : {"/a/b/c.ZANTORPROJ", "/a/b/.zantorproj", "/a/b"})
        EXPECT_EQ(projectDirectory(path), path);
    const TemporaryFolder disk;
    disk.write("there/file.txt", "");
    EXPECT_FALSE(isProjectMissing((disk / "there/gone.zantorproj").string()));
    EXPECT_TRUE(isProjectMissing((disk / "gone/gone.zantorproj").string()));
    EXPECT_TRUE(isProjectMissing((disk / std::string(300, 'x')).string())) << "the query fails";
}
