// The keys of the Projects screen and of its popups.

#include "projects_fixture.h"

namespace {

struct Keys : ProjectsTest {
    Keys() { ImGui::GetIO().ConfigFlags |= ImGuiConfigFlags_NavEnableKeyboard; }

    void chord(ImGuiKey pressed) {
        ImGui::GetIO().AddKeyEvent(ImGuiMod_Ctrl, true);
        key(pressed);
        ImGui::GetIO().AddKeyEvent(ImGuiMod_Ctrl, false);
        frame();
    }
    void openCreatePopup() {
        chord(ImGuiKey_N);
        frames(3);
        ASSERT_TRUE(popupOpen(kCreatePopup));
    }
    void focusRow(int index) {
        app->projectToFocus = projects().at(static_cast<std::size_t>(index)).path;
        frames(2);
        ASSERT_TRUE(ringOn(index));
    }
    bool ringOn(int index) const {
        const ImGuiContext& context = *ImGui::GetCurrentContext();
        return context.NavCursorVisible && context.NavId == identify(kProjectList, {index, "##project_row"});
    }
    static std::string clipboard() { return ImGui::GetClipboardText(); }
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
    chord(ImGuiKey_F);
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
    chord(ImGuiKey_Z);
    EXPECT_EQ(projects(), before);
    EXPECT_EQ(storedProjects(), before);
    app->removeProject(0);
    app->settings->setProjects(before); // lists the same path again
    chord(ImGuiKey_Z);
    EXPECT_EQ(projects(), before);
}

TEST_F(Keys, CopyTheFocusedPathTheStatusAndTheError) {
    focusRow(2);
    chord(ImGuiKey_C);
    EXPECT_EQ(clipboard(), projects()[2].path);
    chord(ImGuiKey_2);
    chord(ImGuiKey_C);
    EXPECT_EQ(clipboard(), "Channel: Stable - Linux x86_64");
    chord(ImGuiKey_1);
    EXPECT_EQ(app->activeTab, LauncherTab::Projects);
    app->openErrorMessage = "the reason";
    app->openErrorRequested = true;
    frames(3);
    chord(ImGuiKey_C);
    EXPECT_EQ(clipboard(), "the reason");
}

TEST_F(Keys, ARefusedNameKeepsTheKeyboardAndANewProjectGetsIt) {
    openCreatePopup();
    type("a/b");
    key(ImGuiKey_Enter);
    EXPECT_NE(app->createProjectError, "");
    type("c");
    EXPECT_STREQ(app->newProjectName, "a/bc");
    key(ImGuiKey_Escape);
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
    chord(ImGuiKey_V);
    EXPECT_EQ(app->newProjectName, "<" + umlauts.substr(0, 156) + ">") << "the text around the caret stays";
}

} // namespace
