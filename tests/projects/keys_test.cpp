// Tests the keyboard on the Projects screen, in its popups, and on the sign-in screen.

#include "projects_fixture.h"

namespace {

struct Keys : ProjectsTest {
    // Presses Tab or another key until an item has the focus.
    bool goTo(const char* window, IdPath path, ImGuiKey by = ImGuiKey_Tab) {
        for (int i = 0; i < 40 && !focused(window, path); ++i)
            key(by);
        return focused(window, path);
    }
    bool activate(const char* window, IdPath path) {
        if (!goTo(window, path)) return false;
        key(ImGuiKey_Enter);
        frames(3); // a popup needs some frames to open
        return true;
    }
    std::string copied() {
        key(ImGuiKey_C, ImGuiMod_Ctrl);
        return ImGui::GetClipboardText();
    }
    void openCreatePopup() {
        key(ImGuiKey_N, ImGuiMod_Ctrl);
        frames(3);
        ASSERT_TRUE(popupOpen(kCreatePopup));
    }
    void focusRow(int index) {
        app->projectToFocus = projects().at(static_cast<std::size_t>(index)).path;
        frames(2);
        ASSERT_TRUE(ringOn(index));
    }
    [[nodiscard]] bool ringOn(int index, const char* item = "##project_row") const {
        return focused(kProjectList, {index, item});
    }
};

TEST_F(Keys, ReachEverythingOnARow) {
    ASSERT_TRUE(goTo(kProjectList, {0, "##project_row"}));
    key(ImGuiKey_DownArrow);
    EXPECT_TRUE(ringOn(1));
    key(ImGuiKey_LeftArrow);
    ASSERT_TRUE(ringOn(1, "##star_toggle"));
    key(ImGuiKey_Space);
    EXPECT_TRUE(projects()[1].favorite);
    ASSERT_TRUE(goTo(kProjectList, {1, "##dots_menu"}, ImGuiKey_RightArrow));
    ASSERT_TRUE(activate(kProjectList, {1, "##dots_menu"}));
    EXPECT_TRUE(menuEntry("Remove from Favorites"));
    key(ImGuiKey_Escape);
    frames(2);
    EXPECT_FALSE(menuEntry("Remove from Favorites"));
    EXPECT_TRUE(ringOn(1, "##dots_menu")) << "the focus returns to where the menu was opened";

    key(ImGuiKey_Menu);
    frames(3);
    for (const ImGuiKey pressed : {ImGuiKey_DownArrow, ImGuiKey_DownArrow, ImGuiKey_Enter})
        key(pressed);
    EXPECT_EQ(system.openedFolders.size(), 1u) << "the third entry is \"Show in File Manager\"";
    ASSERT_TRUE(activate(kRoot, {"##header_star_sort"}));
    EXPECT_TRUE(app->sortStarredFirst);
}

TEST_F(Keys, AndTheMouseDoNotDisturbEachOther) {
    focusRow(1);
    ASSERT_TRUE(click(kProjectList, {1, "##star_toggle"}, ImGuiMouseButton_Right));
    EXPECT_TRUE(menuEntry("Remove From List")) << "although the row has the focus";
    key(ImGuiKey_Escape);
    focusRow(1);
    key(ImGuiKey_Enter);
    EXPECT_EQ(system.launches.size(), 1u);
    EXPECT_FALSE(projects()[0].favorite) << "Enter clicked what is under the pointer";
    ASSERT_TRUE(click(kProjectList, {1, "##star_toggle"}));
    EXPECT_FALSE(ImGui::GetCurrentContext()->NavCursorVisible) << "a click ends the focus ring";
    EXPECT_EQ(system.launches.size(), 1u);
}

TEST_F(Keys, TypingStartsASearchWhoseHitsDownAndEnterReach) {
    for (const char* typed : {"b", ".", "z"}) // one per frame; the field is not active yet in the first frames
        type(typed);
    EXPECT_STREQ(app->searchText, "b.z");
    EXPECT_EQ(shown(), Names{"b"});
    key(ImGuiKey_DownArrow);
    EXPECT_TRUE(ringOn(1));
    key(ImGuiKey_F, ImGuiMod_Ctrl);
    key(ImGuiKey_Enter);
    EXPECT_EQ(system.launches.at(0).argument, projects()[0].path);
    EXPECT_EQ(listed(), (Names{"b", "c", "a"}));
    key(ImGuiKey_F, ImGuiMod_Ctrl);
    type("x");
    key(ImGuiKey_Escape);
    EXPECT_STREQ(app->searchText, "");
}

TEST_F(Keys, DeleteRemovesTheFocusedRowAndUndoBringsItBackOnce) {
    const std::vector<ProjectEntry> before = projects();
    focusRow(1);
    key(ImGuiKey_Delete);
    EXPECT_EQ(listed(), (Names{"c", "a"}));
    EXPECT_TRUE(ringOn(1)) << "the row below";
    key(ImGuiKey_Z, ImGuiMod_Ctrl);
    EXPECT_EQ(projects(), before);
    EXPECT_EQ(storedProjects(), before);
    app->removeProject(0);
    app->settings->setProjects(before); // lists the same path again
    key(ImGuiKey_Z, ImGuiMod_Ctrl);
    EXPECT_EQ(projects(), before);
}

TEST_F(Keys, MakeAShortcutEvenWhenTheyAreReleasedAtOnce) {
    ImGuiIO& io = ImGui::GetIO();
    io.ConfigInputTrickleEventQueue = true;
    frame();
    for (const bool down : {true, false})
        for (const ImGuiKey pressed : {ImGuiMod_Ctrl, ImGuiKey_LeftCtrl, ImGuiKey_2})
            io.AddKeyEvent(pressed, down);
    frames(3);
    EXPECT_EQ(app->activeTab, LauncherTab::Installs);
}

TEST_F(Keys, CopyTheFocusedPathAndTheStatus) {
    focusRow(2);
    EXPECT_EQ(copied(), projects()[2].path);
    key(ImGuiKey_2, ImGuiMod_Ctrl);
    EXPECT_EQ(copied(), "Channel: Stable - Linux x86_64");
    key(ImGuiKey_1, ImGuiMod_Ctrl);
    EXPECT_EQ(app->activeTab, LauncherTab::Projects);
}

TEST_F(Keys, CreateAProjectInThePopup) {
    ASSERT_TRUE(activate(kRoot, {"+ New project"}));
    EXPECT_EQ(app->createProjectError, "") << "the key press that opens the popup does not confirm it";
    type("a/b");
    key(ImGuiKey_Enter);
    EXPECT_NE(app->createProjectError, "");
    type("c");
    EXPECT_STREQ(app->newProjectName, "a/bc") << "a refused name keeps the keyboard";
    key(ImGuiKey_Escape);
    frames(2);
    EXPECT_FALSE(popupOpen(kCreatePopup));

    openCreatePopup();
    const std::string name = "Hernia \xF0\x9F\x98\x80\xF0\x9F\xAB\x80"; // two characters beyond U+FFFF
    type(name);
    ASSERT_TRUE(activate(kCreatePopup, {"Browse"}));
    EXPECT_EQ(system.folderDialogs.size(), 1u);
    EXPECT_TRUE(popupOpen(kCreatePopup)) << "Enter on a button presses only that button";
    ASSERT_TRUE(activate(kCreatePopup, {"##NewProjectName"}));
    EXPECT_EQ(listed(), (Names{name, "c", "b", "a"}));
    EXPECT_TRUE(ringOn(0)) << "on the new project";
}

TEST_F(Keys, AnErrorWaitsUntilTheCreatePopupIsClosed) {
    openCreatePopup();
    type("half");
    app->openErrorMessage = "the reason";
    app->openErrorRequested = true;
    frames(2);
    EXPECT_FALSE(popupOpen(kErrorPopup));
    EXPECT_STREQ(app->newProjectName, "half");
    ASSERT_TRUE(click(kCreatePopup, {"Cancel"}));
    for (const ImGuiKey closing : {ImGuiKey_Enter, ImGuiKey_Escape}) {
        frames(3);
        EXPECT_EQ(copied(), "the reason");
        key(closing);
        frames(2);
        EXPECT_FALSE(popupOpen(kErrorPopup));
        app->openErrorRequested = true;
    }
}

TEST_F(Keys, ATextThatIsTooLongIsCutAtAWholeCharacter) {
    std::string umlauts;
    while (umlauts.size() < 2000)
        umlauts += "ü";
    system.chosenFolder = umlauts;
    openCreatePopup();
    ASSERT_TRUE(click(kCreatePopup, {"Browse"}));
    EXPECT_EQ(app->newProjectLocation, umlauts.substr(0, 1022));
    ASSERT_TRUE(click(kCreatePopup, {"##NewProjectName"}));
    ImGui::SetClipboardText(umlauts.c_str());
    type("<>");
    key(ImGuiKey_LeftArrow);
    key(ImGuiKey_V, ImGuiMod_Ctrl);
    EXPECT_EQ(app->newProjectName, "<" + umlauts.substr(0, 156) + ">") << "the text around the caret stays";
}

TEST_F(Keys, SignInCancelCopyAndSignOut) {
    SignInFlow& signIn = *app->signIn;
    signIn.state = SignInState::SignedOut;
    signIn.errorMessage = "the reason";
    frames(2);
    EXPECT_EQ(copied(), "the reason");
    for (const ImGuiKey cancel : {ImGuiKey_Escape, ImGuiKey_Enter}) {
        key(ImGuiKey_Enter);
        EXPECT_EQ(signIn.state, SignInState::SigningIn);
        EXPECT_EQ(copied(), system.openedUrls.back());
        key(cancel);
        EXPECT_EQ(signIn.state, SignInState::SignedOut);
    }
    key(ImGuiKey_DownArrow);
    EXPECT_TRUE(focused(kRoot, {"Sign in"})) << "any first key shows the focus";
    signIn.state = SignInState::SignedIn;
    frames(2);
    ASSERT_TRUE(activate(kRoot, {"Sign out"}));
    EXPECT_EQ(signIn.state, SignInState::SignedOut);
}

} // namespace
