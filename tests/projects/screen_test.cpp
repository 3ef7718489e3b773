// Tests the mouse on the Projects screen.

#include "projects_fixture.h"

namespace {

using SearchBox = ProjectsTest;
using SortHeaders = ProjectsTest;
using Row = ProjectsTest;
using AtRest = ProjectsTest;

TEST_F(SearchBox, TheCrossClearsTheTextThatIsBeingEditedButNotBehindAPopup) {
    const ImRect field = *rect(kRoot, {"##ProjectSearch"});
    const ImVec2 cross(field.Min.x - 30.0f + 210.0f - 15.0f, field.GetCenter().y);
    clickAt(field.GetCenter());
    type("nothing");
    EXPECT_EQ(shown(), Names{});
    clickAt(cross);
    EXPECT_EQ(shown(), (Names{"c", "b", "a"}));
    app->beginNewProject();
    copyToBuffer("c", app->searchText);
    frames(2);
    clickAt(cross);
    EXPECT_STREQ(app->searchText, "c");
}

TEST_F(SearchBox, ThatHidesEveryProjectOffersToClearItself) {
    copyToBuffer("zzz", app->searchText);
    frame();
    EXPECT_FALSE(rect(kRoot, {"empty_projects", "Import projects"}));
    ASSERT_TRUE(click(kRoot, {"empty_projects", "Clear search"}));
    EXPECT_STREQ(app->searchText, "");
    app->settings->setProjects({});
    copyToBuffer("zzz", app->searchText); // hides no project, because the list is empty
    frame();
    ASSERT_TRUE(click(kRoot, {"empty_projects", "Import projects"}));
    EXPECT_TRUE(projects().empty()) << "the dialog was cancelled";
}

TEST_F(SortHeaders, SortTheRowsButNotTheStoredList) {
    ASSERT_TRUE(click(kRoot, {"Name"}));
    EXPECT_EQ(shown(), (Names{"a", "b", "c"}));
    ASSERT_TRUE(click(kRoot, {"Name"}));
    EXPECT_EQ(shown(), (Names{"c", "b", "a"}));
    ASSERT_TRUE(click(kRoot, {"Platform"}));
    EXPECT_TRUE(app->sortAscending) << "another column starts in ascending order";
    EXPECT_EQ(listed(), (Names{"c", "b", "a"}));
}

TEST_F(Row, OpensOnAClickButNotOnAClickOnItsStar) {
    const ImVec2 row = rect(kProjectList, {1, "##project_row"})->GetCenter();
    const ImVec2 star = rect(kProjectList, {1, "##star_toggle"})->GetCenter();
    moveTo(row);
    press(ImGuiMouseButton_Left);
    moveTo(star);
    release(ImGuiMouseButton_Left); // pressed on the row, released on the star: must not open the project, even later
    moveTo(row);
    clickAt(star);
    EXPECT_TRUE(storedProjects().at(1).favorite);
    EXPECT_TRUE(system.launches.empty());
    ASSERT_TRUE(click(kProjectList, {2, "##project_row"}));
    EXPECT_EQ(listed(), (Names{"a", "c", "b"}));
    const RecordedLaunch launch = {editor.string(), projects()[0].path, editor.parent_path().string()};
    EXPECT_EQ(system.launches, std::vector{launch});
}

struct Menu : ProjectsTest {
    bool open(int row, const char* item = "##project_row") {
        frames(2); // an earlier menu needs these frames to close
        return click(kProjectList, {row, item}, ImGuiMouseButton_Right) && menuEntry("Remove From List");
    }
    bool choose(int row, const char* entry, const char* item = "##project_row") {
        return open(row, item) && clickMenu(entry);
    }
};

TEST_F(Menu, EachEntryActsOnItsRow) {
    ASSERT_TRUE(choose(1, "Open Project"));
    EXPECT_EQ(listed(), (Names{"b", "c", "a"}));
    ASSERT_TRUE(choose(2, "Add to Favorites", "##star_toggle"));
    EXPECT_TRUE(storedProjects().at(2).favorite);
    ASSERT_TRUE(choose(2, "Show in File Manager", "##dots_menu"));
    EXPECT_EQ(std::filesystem::path(system.openedFolders.at(0)), folder / "projects/a");
    EXPECT_EQ(system.launches.size(), 1u) << "no click reaches the row below the menu";
}

TEST_F(Menu, OfAMissingProjectOffersNothingThatNeedsItsFolder) {
    std::filesystem::remove_all(folder / "projects/b");
    ASSERT_TRUE(click(kProjectList, {1, "##project_row"}));
    EXPECT_EQ(app->openErrorMessage, "") << "a click does nothing";
    ASSERT_TRUE(open(1));
    for (const char* label : {"Open Project", "Show in File Manager"}) {
        bool disabled = false;
        EXPECT_TRUE(menuEntry(label, &disabled) && disabled) << label;
    }
    ASSERT_TRUE(clickMenu("Add to Favorites"));
    EXPECT_TRUE(projects()[1].favorite);
}

// In the frame that removes a project, the rows below it are still drawn with their old indices.
TEST_F(Menu, RemovesEveryRowAndDeletesNothing) {
    app->sortColumn = ProjectSortColumn::Name;
    for (const Names& left : {Names{"b", "a"}, {"a"}, {}}) {
        ASSERT_TRUE(choose(0, "Remove From List"));
        EXPECT_EQ(listed(), left);
        EXPECT_EQ(storedProjects().size(), left.size());
    }
    EXPECT_TRUE(std::filesystem::exists(folder / "projects/a/a.zantorproj"));
}

TEST_F(AtRest, OnlyAChangeOnDiskNeedsAFrame) {
    ASSERT_TRUE(app->isAtRest());
    std::filesystem::remove_all(folder / "projects/b");
    EXPECT_FALSE(app->isAtRest());
    frame();
    EXPECT_TRUE(app->isAtRest());
    for (const LauncherTab tab : {LauncherTab::Projects, LauncherTab::Installs}) {
        app->activeTab = tab;
        frame();
        EXPECT_TRUE(app->isAtRest());
        folder.write("launcher/here/editor/.zantor_editor_version", tab == LauncherTab::Projects ? "1.0" : "2.0");
        EXPECT_FALSE(app->isAtRest()) << "the screen shows another version";
    }
    frame();
    std::filesystem::remove(editor);
    EXPECT_FALSE(app->isAtRest()) << "the card shows another location";
}

TEST_F(AtRest, AWorkerOrAWaitingProjectNeedsFrames) {
    app->pendingOpenProjectPath = projects()[0].path;
    EXPECT_FALSE(app->isAtRest());
    app->pendingOpenProjectPath.clear();
    app->install->startUpdate();
    EXPECT_FALSE(app->isAtRest());
    while (app->install->isRunning())
        frame();
    EXPECT_TRUE(app->isAtRest());
    app->signIn->state = SignInState::SigningIn;
    EXPECT_FALSE(app->isAtRest());
    app->signIn->state = SignInState::SignedIn;
}

} // namespace
