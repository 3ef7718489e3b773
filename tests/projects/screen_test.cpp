// The Projects screen under mouse and keyboard.

#include <gtest/gtest.h>

#include "support/ui_harness.h"

namespace {

using Names = std::vector<std::string>;

// A signed-in launcher with an editor and three projects, "c" the newest.
struct Projects : UiHarness {
    Projects() {
        installEditor();
        LauncherApp& launcherApp = startSignedIn();
        launcherApp.settings->setProjects({makeProject("c", 30), makeProject("b", 20), makeProject("a", 10)});
        frames(2);
    }
    Names listed() const {
        Names names;
        for (const ProjectEntry& entry : app->settings->projects())
            names.push_back(entry.name);
        return names;
    }
    // The names from top to bottom, as the rows stand in the last frame.
    Names shown() const {
        std::vector<std::pair<float, std::string>> rows;
        const std::vector<ProjectEntry>& projects = app->settings->projects();
        for (std::size_t i = 0; i < projects.size(); ++i) {
            if (const auto row = rect(kProjectList, {static_cast<int>(i), "##project_row"}))
                rows.emplace_back(row->Min.y, projects[i].name);
        }
        std::sort(rows.begin(), rows.end());
        Names names;
        for (const auto& row : rows)
            names.push_back(row.second);
        return names;
    }
    bool rightClick(int row, const char* item) {
        return click(kProjectList, {row, item}, ImGuiMouseButton_Right) && menuEntry("Remove From List");
    }
    ImVec2 clearCross() const {
        const ImRect field = *rect(kRoot, {"##ProjectSearch"});
        return {field.Min.x - 30.0f + 210.0f - 15.0f, field.GetCenter().y};
    }
    const RecordingSystem& system = recordingSystem();
};

TEST(SearchBox, TheCrossClearsForGoodWhileTheFieldHasTheKeyboard) {
    Projects ui;
    ASSERT_TRUE(ui.click(kRoot, {"##ProjectSearch"}));
    ui.type("nothing");
    ui.frame();
    ASSERT_STREQ(ui.app->searchText, "nothing");
    EXPECT_EQ(ui.shown(), Names{});

    ui.moveTo(ui.clearCross());
    ui.press(ImGuiMouseButton_Left);
    EXPECT_STREQ(ui.app->searchText, "");
    EXPECT_EQ(ui.shown(), (Names{"c", "b", "a"})) << "in the same frame";
    ui.release(ImGuiMouseButton_Left);
    ui.frames(3);
    EXPECT_STREQ(ui.app->searchText, "");

    ASSERT_TRUE(ui.click(kRoot, {"##ProjectSearch"}));
    ui.type("b");
    EXPECT_STREQ(ui.app->searchText, "b") << "nothing of the old text comes back";
    EXPECT_EQ(ui.shown(), Names{"b"});
}

TEST(EmptyState, OffersWhatFits) {
    Projects ui;
    const std::vector<ProjectEntry> some = ui.app->settings->projects();
    for (const auto& [any, search] : {std::pair{true, ""}, {true, "zzz"}, {false, "zzz"}, {false, ""}}) {
        ui.app->settings->setProjects(any ? some : std::vector<ProjectEntry>());
        copyToBuffer(search, ui.app->searchText);
        ui.frame();
        EXPECT_EQ(ui.rect(kRoot, {"empty_projects", "Clear search"}).has_value(), any && *search) << search;
        for (const char* offer : {"Import projects", "+ New project"})
            EXPECT_EQ(ui.rect(kRoot, {"empty_projects", offer}).has_value(), !any) << search;
    }
    ASSERT_TRUE(ui.click(kRoot, {"empty_projects", "Import projects"}));
    EXPECT_EQ(ui.system.fileDialogs.size(), 1u);
    ui.app->settings->setProjects(some);
    copyToBuffer("zzz", ui.app->searchText);
    ui.frame();
    ASSERT_TRUE(ui.click(kRoot, {"empty_projects", "Clear search"}));
    ui.frame();
    EXPECT_EQ(ui.shown(), (Names{"c", "b", "a"}));
}

TEST(SortHeaders, SortWhatIsShownAndTheListStaysAsItIs) {
    Projects ui;
    ASSERT_TRUE(ui.click(kRoot, {"Name"}));
    EXPECT_EQ(ImGui::GetMouseCursor(), ImGuiMouseCursor_Hand);
    EXPECT_EQ(ui.shown(), (Names{"a", "b", "c"}));
    ASSERT_TRUE(ui.click(kRoot, {"Editor version"}));
    EXPECT_EQ(ui.app->sortColumn, ProjectSortColumn::EditorVersion);
    ASSERT_TRUE(ui.click(kRoot, {"Platform"}));
    EXPECT_EQ(ui.app->sortColumn, ProjectSortColumn::Platform);
    EXPECT_EQ(ui.shown(), (Names{"c", "b", "a"})) << "equal keys stay newest first";
    EXPECT_EQ(ui.listed(), (Names{"c", "b", "a"}));
}

TEST(Menu, OpensOnTheDotsAndOnARightClickAnywhereOfTheRow) {
    for (const char* item : {"##project_row", "##star_toggle", "##dots_menu"}) {
        Projects ui;
        EXPECT_TRUE(ui.rightClick(1, item)) << item;
        EXPECT_FALSE(ui.app->settings->projects()[1].favorite);
    }
    Projects ui;
    ASSERT_TRUE(ui.click(kProjectList, {1, "##dots_menu"}));
    ui.frame();
    EXPECT_TRUE(ui.menuEntry("Remove From List"));
    EXPECT_TRUE(ui.system.launches.empty());
}

TEST(Menu, ItsEntriesDoWhatTheySay) {
    Projects ui;
    ASSERT_TRUE(ui.rightClick(1, "##project_row"));
    const std::string path = ui.app->settings->projects()[1].path;
    ASSERT_TRUE(ui.clickMenu("Open Project"));
    EXPECT_EQ(ui.system.launches, (std::vector<RecordedLaunch>{{(ui.launcher / "bin" / "editor.exe").string(), path,
                                                                (ui.launcher / "bin").string()}}));
    EXPECT_EQ(ui.listed(), (Names{"b", "c", "a"}));

    ui.frames(2);
    ASSERT_TRUE(ui.rightClick(2, "##project_row"));
    EXPECT_FALSE(ui.menuEntry("Remove from Favorites"));
    ASSERT_TRUE(ui.clickMenu("Add to Favorites"));
    EXPECT_TRUE(ui.storedProjects().at(2).favorite);
    ui.frames(2);
    ASSERT_TRUE(ui.rightClick(2, "##project_row"));
    ASSERT_TRUE(ui.clickMenu("Remove from Favorites"));
    EXPECT_FALSE(ui.storedProjects().at(2).favorite);

    ui.frames(2);
    ASSERT_TRUE(ui.rightClick(2, "##project_row"));
    ASSERT_TRUE(ui.clickMenu("Show in File Manager"));
    ASSERT_EQ(ui.system.openedFolders.size(), 1u);
    EXPECT_EQ(std::filesystem::path(ui.system.openedFolders[0]), ui.folder / "projects/a");
    EXPECT_EQ(ui.system.launches.size(), 1u) << "no click went through to the row";
}

TEST(Menu, OfAMissingProjectStillStarsAndRemoves) {
    Projects ui;
    std::filesystem::remove_all(ui.folder / "projects/b");
    ui.frame();
    ASSERT_TRUE(ui.click(kProjectList, {1, "##project_row"}));
    EXPECT_TRUE(ui.system.launches.empty());
    EXPECT_FALSE(ui.popupOpen(kErrorPopup));
    ASSERT_TRUE(ui.rightClick(1, "##project_row"));
    for (const auto& [label, greyed] : {std::pair{"Open Project", true},
                                        {"Add to Favorites", false},
                                        {"Show in File Manager", true},
                                        {"Remove From List", false}}) {
        bool disabled = !greyed;
        EXPECT_TRUE(ui.menuEntry(label, &disabled)) << label;
        EXPECT_EQ(disabled, greyed) << label;
    }
    ASSERT_TRUE(ui.clickMenu("Open Project"));
    EXPECT_TRUE(ui.system.launches.empty());
    ASSERT_TRUE(ui.clickMenu("Remove From List"));
    EXPECT_EQ(ui.listed(), (Names{"c", "a"}));
    ui.frames(2);
    EXPECT_EQ(ui.shown(), (Names{"c", "a"}));
    EXPECT_EQ(ui.storedProjects().size(), 2u);
}

// The frame that removes goes on drawing rows whose indices were counted before.
TEST(Menu, RemovingEveryRowFirstToLastAndLastToFirst) {
    for (const bool ascending : {true, false}) {
        Projects ui;
        ui.app->sortColumn = ProjectSortColumn::Name;
        ui.app->sortAscending = ascending;
        ui.frame();
        while (!ui.listed().empty()) {
            const Names before = ui.listed();
            ASSERT_TRUE(ui.rightClick(0, "##project_row"));
            ASSERT_TRUE(ui.clickMenu("Remove From List"));
            EXPECT_EQ(ui.listed(), Names(before.begin() + 1, before.end()));
            ui.frames(3);
        }
        EXPECT_TRUE(ui.rect(kRoot, {"empty_projects", "Import projects"}));
        EXPECT_TRUE(std::filesystem::exists(ui.folder / "projects/a/a.zantorproj"));
    }
}

TEST(ProjectsScreen, APopupShieldsTheSearchBoxAndTheRows) {
    Projects ui;
    copyToBuffer("c", ui.app->searchText);
    ASSERT_TRUE(ui.click(kRoot, {"+ New project"}));
    ui.frames(2);
    ASSERT_TRUE(ui.popupOpen(kCreatePopup));
    ui.clickAt(ui.clearCross());
    EXPECT_STREQ(ui.app->searchText, "c");
    ui.click(kProjectList, {0, "##project_row"});
    EXPECT_TRUE(ui.system.launches.empty());
}

} // namespace
