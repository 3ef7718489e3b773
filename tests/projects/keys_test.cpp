// The keys of the Projects screen and of its popups.

#include "projects_fixture.h"

namespace {

struct Keys : ProjectsTest {
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
    bool ringOn(int index) const { return focused(kProjectList, {index, "##project_row"}); }
    std::string copied() {
        key(ImGuiKey_C, ImGuiMod_Ctrl);
        return ImGui::GetClipboardText();
    }
};

TEST_F(Keys, RightClickOnTheStarOfTheFocusedRowOpensItsMenu) {
    focusRow(1);
    ASSERT_TRUE(click(kProjectList, {1, "##star_toggle"}, ImGuiMouseButton_Right));
    EXPECT_TRUE(menuEntry("Remove From List"));
}

TEST_F(Keys, TypingStartsASearchWhoseHitsDownAndEnterReach) {
    for (const char* typed : {"b", ".", "z"}) // each in a frame of its own, the field is not active in the first ones
        type(typed);
    EXPECT_STREQ(app->searchText, "b.z");
    EXPECT_EQ(shown(), Names{"b"});
    key(ImGuiKey_DownArrow);
    EXPECT_TRUE(ringOn(1));
    key(ImGuiKey_F, ImGuiMod_Ctrl);
    key(ImGuiKey_Enter);
    EXPECT_EQ(system.launches.at(0).argument, projects()[0].path);
    EXPECT_EQ(listed(), (Names{"b", "c", "a"}));
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

TEST_F(Keys, CopyTheFocusedPathTheStatusAndTheError) {
    focusRow(2);
    EXPECT_EQ(copied(), projects()[2].path);
    key(ImGuiKey_2, ImGuiMod_Ctrl);
    EXPECT_EQ(copied(), "Channel: Stable - Linux x86_64");
    key(ImGuiKey_1, ImGuiMod_Ctrl);
    EXPECT_EQ(app->activeTab, LauncherTab::Projects);
    app->openErrorMessage = "the reason";
    app->openErrorRequested = true;
    frames(3);
    EXPECT_EQ(copied(), "the reason");
}

TEST_F(Keys, ARefusedNameKeepsTheKeyboardAndANewProjectGetsIt) {
    openCreatePopup();
    type("a/b");
    key(ImGuiKey_Enter);
    EXPECT_NE(app->createProjectError, "");
    type("c");
    EXPECT_STREQ(app->newProjectName, "a/bc");
    key(ImGuiKey_Escape);
    openCreatePopup();
    type("new");
    key(ImGuiKey_Enter);
    frames(2);
    EXPECT_EQ(listed(), (Names{"new", "c", "b", "a"}));
    EXPECT_TRUE(ringOn(0));
}

TEST_F(Keys, AnInstallErrorWaitsUntilTheCreatePopupIsClosed) {
    openCreatePopup();
    type("half");
    app->openErrorRequested = true;
    frames(2);
    EXPECT_FALSE(popupOpen(kErrorPopup));
    EXPECT_STREQ(app->newProjectName, "half");
    ASSERT_TRUE(click(kCreatePopup, {"Cancel"}));
    frames(2);
    EXPECT_TRUE(popupOpen(kErrorPopup));
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

TEST(SignInKeys, EnterPressesTheOneButtonEscapeCancelsAndCtrlCCopies) {
    UiHarness ui;
    ui.configure();
    SignInFlow& signIn = *ui.start().signIn;
    const auto copied = [&] {
        ui.key(ImGuiKey_C, ImGuiMod_Ctrl);
        return std::string(ImGui::GetClipboardText());
    };
    signIn.errorMessage = "the reason";
    ui.frames(2);
    EXPECT_EQ(copied(), "the reason");
    for (const ImGuiKey cancel : {ImGuiKey_Escape, ImGuiKey_Enter}) {
        ui.key(ImGuiKey_Enter);
        EXPECT_EQ(signIn.state, SignInState::SigningIn);
        EXPECT_EQ(copied(), recordingSystem().openedUrls.back());
        ui.key(cancel);
        EXPECT_EQ(signIn.state, SignInState::SignedOut);
    }
}

} // namespace
