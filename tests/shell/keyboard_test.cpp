// The launcher driven by the keyboard alone.

#include <gtest/gtest.h>

#include "support/ui_harness.h"

namespace {

struct Keyboard : testing::Test, UiHarness {
    // Presses a key until an item has the focus.
    bool goTo(const char* window, IdPath path, ImGuiKey by = ImGuiKey_Tab) {
        for (int i = 0; i < 40 && !focused(window, path); ++i)
            key(by);
        return focused(window, path);
    }
    bool activate(const char* window, IdPath path, ImGuiKey by = ImGuiKey_Enter) {
        if (!goTo(window, path)) return false;
        key(by);
        frames(3); // a popup needs some frames to open
        return true;
    }
    // A signed-in launcher with an editor and two projects, "b" the newest.
    LauncherApp& startWithProjects() {
        installEditor();
        LauncherApp& launcherApp = startSignedIn();
        launcherApp.settings->setProjects({makeProject("b", 2), makeProject("a", 1)});
        frames(2);
        return launcherApp;
    }
    RecordingSystem& system = recordingSystem();
};

TEST_F(Keyboard, SignsInCancelsAndSignsOut) {
    configure();
    const SignInState& state = start().signIn->state;
    frames(2);
    key(ImGuiKey_DownArrow);
    EXPECT_TRUE(focused(kRoot, {"Sign in"})) << "any first key shows the focus";
    ASSERT_TRUE(activate(kRoot, {"Sign in"}));
    EXPECT_EQ(state, SignInState::SigningIn);
    ASSERT_TRUE(activate(kRoot, {"Cancel"}, ImGuiKey_Space));
    EXPECT_EQ(state, SignInState::SignedOut);

    app->signIn->state = SignInState::SignedIn;
    frames(2);
    ASSERT_TRUE(activate(kRoot, {"Installs"}));
    EXPECT_EQ(app->activeTab, LauncherTab::Installs);
    ASSERT_TRUE(activate(kRoot, {"Sign out"}));
    EXPECT_EQ(state, SignInState::SignedOut);
}

TEST_F(Keyboard, SearchesAndSorts) {
    LauncherApp& launcherApp = startWithProjects();
    copyToBuffer("app", launcherApp.searchText);
    key(ImGuiKey_F, ImGuiMod_Ctrl);
    type("x");
    key(ImGuiKey_Escape);
    EXPECT_STREQ(launcherApp.searchText, "");

    ASSERT_TRUE(activate(kRoot, {"Name"}));
    EXPECT_EQ(launcherApp.sortColumn, ProjectSortColumn::Name);
    key(ImGuiKey_Space);
    EXPECT_FALSE(launcherApp.sortAscending);
    ASSERT_TRUE(activate(kRoot, {"##header_star_sort"}));
    EXPECT_TRUE(launcherApp.sortStarredFirst);
}

TEST_F(Keyboard, ReachesEverythingOnARow) {
    LauncherApp& launcherApp = startWithProjects();
    ASSERT_TRUE(goTo(kProjectList, {0, "##project_row"}));
    key(ImGuiKey_DownArrow);
    EXPECT_TRUE(focused(kProjectList, {1, "##project_row"}));
    key(ImGuiKey_LeftArrow);
    ASSERT_TRUE(focused(kProjectList, {1, "##star_toggle"}));
    key(ImGuiKey_Space);
    EXPECT_TRUE(launcherApp.settings->projects()[1].favorite);
    ASSERT_TRUE(goTo(kProjectList, {1, "##dots_menu"}, ImGuiKey_RightArrow));

    ASSERT_TRUE(activate(kProjectList, {1, "##dots_menu"}));
    EXPECT_TRUE(menuEntry("Remove from Favorites"));
    key(ImGuiKey_Escape);
    frames(2);
    EXPECT_FALSE(menuEntry("Remove from Favorites"));
    EXPECT_TRUE(focused(kProjectList, {1, "##dots_menu"})) << "the focus returns to where the menu was opened";

    key(ImGuiKey_Menu);
    frames(3);
    for (const ImGuiKey pressed : {ImGuiKey_DownArrow, ImGuiKey_DownArrow, ImGuiKey_Enter})
        key(pressed);
    EXPECT_EQ(system.openedFolders.size(), 1u) << "the third entry is \"Show in File Manager\"";

    ASSERT_TRUE(goTo(kProjectList, {1, "##project_row"}, ImGuiKey_LeftArrow));
    key(ImGuiKey_Enter);
    EXPECT_EQ(system.launches.size(), 1u);
}

TEST_F(Keyboard, CreatesAProjectInThePopup) {
    startWithProjects();
    ASSERT_TRUE(activate(kRoot, {"+ New project"}));
    EXPECT_TRUE(popupOpen(kCreatePopup)) << "the key press that opens the popup does not confirm it";
    EXPECT_EQ(app->createProjectError, "");
    key(ImGuiKey_Enter);
    EXPECT_NE(app->createProjectError, "") << "a project needs a name";
    EXPECT_TRUE(popupOpen(kCreatePopup));

    for (int i = 0; i < 6; ++i) {
        key(ImGuiKey_Tab);
        EXPECT_EQ(ImGui::GetCurrentContext()->NavWindow, ImGui::FindWindowByName(kCreatePopup)) << "left the modal";
    }
    key(ImGuiKey_Escape);
    frames(2);
    EXPECT_FALSE(popupOpen(kCreatePopup));
    EXPECT_EQ(app->settings->projects().size(), 2u);

    ASSERT_TRUE(activate(kRoot, {"+ New project"}));
    const std::string name = "Hernia \xF0\x9F\x98\x80\xF0\x9F\xAB\x80"; // two characters beyond U+FFFF
    type(name);
    ASSERT_TRUE(activate(kCreatePopup, {"Browse"}));
    EXPECT_EQ(system.folderDialogs.size(), 1u);
    EXPECT_TRUE(popupOpen(kCreatePopup)) << "Enter on a button presses only that button";
    ASSERT_TRUE(activate(kCreatePopup, {"##NewProjectName"}));
    EXPECT_FALSE(popupOpen(kCreatePopup)) << app->createProjectError;
    ASSERT_EQ(app->settings->projects().size(), 3u);
    EXPECT_EQ(app->settings->projects()[0].name, name);
    EXPECT_TRUE(std::filesystem::is_directory(folder / "documents/VOLO Projects" / name));
}

TEST_F(Keyboard, ClosesTheErrorPopup) {
    startWithProjects();
    for (const ImGuiKey pressed : {ImGuiKey_Enter, ImGuiKey_Escape}) {
        app->openErrorRequested = true;
        frames(3);
        ASSERT_TRUE(popupOpen(kErrorPopup));
        key(pressed);
        frames(2);
        EXPECT_FALSE(popupOpen(kErrorPopup));
    }
}

TEST_F(Keyboard, DoesNotDisturbTheMouse) {
    startWithProjects();
    moveTo(rect(kProjectList, {0, "##star_toggle"})->GetCenter());
    ASSERT_TRUE(activate(kProjectList, {0, "##project_row"}));
    EXPECT_EQ(system.launches.size(), 1u);
    EXPECT_FALSE(app->settings->projects()[0].favorite) << "Enter clicked what is under the pointer";

    press(ImGuiMouseButton_Left);
    release(ImGuiMouseButton_Left);
    EXPECT_TRUE(app->settings->projects()[0].favorite);
    EXPECT_EQ(system.launches.size(), 1u) << "the click on the star opened the project";
    EXPECT_FALSE(ImGui::GetCurrentContext()->NavCursorVisible) << "a click ends the focus ring";
}

} // namespace
