// The launcher without a mouse.

#include <gtest/gtest.h>

#include "support/ui_harness.h"

namespace {

struct Keyboard : UiHarness {
    Keyboard() { ImGui::GetIO().ConfigFlags |= ImGuiConfigFlags_NavEnableKeyboard; } // as the host sets it

    [[nodiscard]] bool standsOn(const char* window, IdPath path) const {
        const ImGuiContext& context = *ImGui::GetCurrentContext();
        return context.NavCursorVisible && context.NavId != 0 && context.NavId == identify(window, path);
    }
    // Presses a key until the keyboard stands on an item.
    [[nodiscard]] bool goTo(const char* window, IdPath path, ImGuiKey by = ImGuiKey_Tab) {
        for (int i = 0; i < 40 && !standsOn(window, path); ++i)
            key(by);
        return standsOn(window, path);
    }
    bool press(const char* window, IdPath path, ImGuiKey how = ImGuiKey_Enter) {
        if (!goTo(window, path)) return false;
        key(how);
        return true;
    }
    void chord(ImGuiKey modifier, ImGuiKey pressed) {
        ImGui::GetIO().AddKeyEvent(modifier, true);
        key(pressed);
        ImGui::GetIO().AddKeyEvent(modifier, false);
        frame();
    }
    RecordingSystem& system = recordingSystem();
};

TEST(Keyboard, TakesTheWholeTour) {
    Keyboard ui;
    ui.installEditor();
    ui.configure();
    LauncherApp& app = ui.start();
    ui.frames(2);

    ui.key(ImGuiKey_DownArrow); // the first key of all
    EXPECT_TRUE(ui.standsOn(kRoot, {"Sign in"}));
    ASSERT_TRUE(ui.press(kRoot, {"Sign in"}));
    EXPECT_EQ(app.signIn->state, SignInState::SigningIn);
    EXPECT_EQ(ui.system.openedUrls.size(), 1u);
    ASSERT_TRUE(ui.press(kRoot, {"Cancel"}, ImGuiKey_Space));
    EXPECT_EQ(app.signIn->state, SignInState::SignedOut);
    app.signIn->state = SignInState::SignedIn; // as the browser would have it
    ui.frames(2);

    for (const char* name : {"Hernia", "Appendix"}) {
        ASSERT_TRUE(ui.press(kRoot, {"+ New project"}));
        ui.frames(3);
        ASSERT_TRUE(ui.popupOpen(kCreatePopup));
        ui.type(name);
        ui.key(ImGuiKey_Enter);
        ui.frames(2);
        ASSERT_FALSE(ui.popupOpen(kCreatePopup)) << app.createProjectError;
    }
    ASSERT_EQ(app.settings->projects().size(), 2u);

    ui.chord(ImGuiMod_Ctrl, ImGuiKey_F);
    ui.frame();
    ui.type("hern");
    EXPECT_STREQ(app.searchText, "hern");
    ui.key(ImGuiKey_Escape);
    EXPECT_STREQ(app.searchText, "");

    ASSERT_TRUE(ui.press(kRoot, {"Name"}));
    EXPECT_EQ(app.sortColumn, ProjectSortColumn::Name);
    EXPECT_TRUE(app.sortAscending);
    ui.key(ImGuiKey_Space);
    EXPECT_FALSE(app.sortAscending);
    ASSERT_TRUE(ui.press(kRoot, {"##header_star_sort"}));
    EXPECT_TRUE(app.sortStarredFirst);

    // Hernia is the second of the list, and the first of the table.
    ASSERT_EQ(app.settings->projects()[1].name, "Hernia");
    ASSERT_TRUE(ui.goTo(kProjectList, {1, "##project_row"}));
    ui.key(ImGuiKey_DownArrow);
    EXPECT_TRUE(ui.standsOn(kProjectList, {0, "##project_row"}));
    ui.key(ImGuiKey_LeftArrow);
    ASSERT_TRUE(ui.standsOn(kProjectList, {0, "##star_toggle"}));
    ui.key(ImGuiKey_Space);
    EXPECT_TRUE(app.settings->projects()[0].favorite);
    EXPECT_TRUE(ui.standsOn(kProjectList, {0, "##star_toggle"})) << "on the row, wherever it has moved";
    ASSERT_TRUE(ui.goTo(kProjectList, {0, "##dots_menu"}, ImGuiKey_RightArrow));

    ui.key(ImGuiKey_Enter);
    ui.frames(3);
    ASSERT_TRUE(ui.menuEntry("Remove from Favorites"));
    ui.key(ImGuiKey_Escape);
    ui.frames(2);
    EXPECT_FALSE(ui.menuEntry("Remove from Favorites"));
    ASSERT_TRUE(ui.standsOn(kProjectList, {0, "##dots_menu"})) << "back where the menu was opened";
    ui.key(ImGuiKey_Menu);
    ui.frames(3);
    ASSERT_TRUE(ui.menuEntry("Show in File Manager"));
    ui.key(ImGuiKey_DownArrow);
    ui.key(ImGuiKey_DownArrow);
    ui.key(ImGuiKey_Enter);
    ui.frames(2);
    EXPECT_EQ(ui.system.openedFolders.size(), 1u);
    EXPECT_FALSE(ui.menuEntry("Show in File Manager"));

    ASSERT_TRUE(ui.goTo(kProjectList, {0, "##project_row"}, ImGuiKey_LeftArrow));
    ui.key(ImGuiKey_Enter);
    EXPECT_EQ(ui.system.launches.size(), 1u);

    ASSERT_TRUE(ui.press(kRoot, {"Installs"}));
    EXPECT_EQ(app.activeTab, LauncherTab::Installs);
    ASSERT_TRUE(ui.press(kRoot, {"Sign out"}));
    EXPECT_EQ(app.signIn->state, SignInState::SignedOut);
    EXPECT_EQ(ImGui::GetMouseCursor(), ImGuiMouseCursor_Arrow);
}

TEST(Keyboard, StaysInsideAModalUntilEscapeAndEnterPressesTheButtonItStandsOn) {
    Keyboard ui;
    LauncherApp& app = ui.startSignedIn();
    ui.frames(2);
    ASSERT_TRUE(ui.press(kRoot, {"+ New project"}));
    ui.frames(3);
    EXPECT_TRUE(ui.popupOpen(kCreatePopup)) << "the press that opens it does not confirm";
    EXPECT_EQ(app.createProjectError, "");
    ui.key(ImGuiKey_Enter);
    EXPECT_NE(app.createProjectError, "") << "without a name it stays";
    EXPECT_TRUE(ui.popupOpen(kCreatePopup));

    for (int i = 0; i < 12; ++i) {
        ui.key(i < 6 ? ImGuiKey_Tab : ImGuiKey_DownArrow);
        EXPECT_EQ(ImGui::GetCurrentContext()->NavWindow, ImGui::FindWindowByName(kCreatePopup)) << i;
    }
    ASSERT_TRUE(ui.press(kCreatePopup, {"Browse"}));
    EXPECT_EQ(ui.system.folderDialogs.size(), 1u);
    EXPECT_TRUE(ui.popupOpen(kCreatePopup));
    ui.key(ImGuiKey_Escape);
    ui.frames(2);
    EXPECT_FALSE(ui.popupOpen(kCreatePopup));
    EXPECT_TRUE(app.settings->projects().empty());

    for (const ImGuiKey key : {ImGuiKey_Enter, ImGuiKey_Escape}) {
        app.openErrorRequested = true;
        ui.frames(3);
        ASSERT_TRUE(ui.popupOpen(kErrorPopup));
        ui.key(key);
        ui.frames(2);
        EXPECT_FALSE(ui.popupOpen(kErrorPopup));
    }
}

// The pointer rests on a row's star while the keyboard opens another row, and the row itself.
TEST(Keyboard, AndMouseDoNotGetInEachOthersWay) {
    Keyboard ui;
    ui.installEditor();
    LauncherApp& app = ui.startSignedIn();
    app.settings->setProjects({ui.makeProject("b", 2), ui.makeProject("a", 1)});
    ui.frames(2);
    ui.moveTo(ui.rect(kProjectList, {0, "##star_toggle"})->GetCenter());
    ASSERT_TRUE(ui.press(kProjectList, {0, "##project_row"}));
    EXPECT_EQ(ui.system.launches.size(), 1u);
    EXPECT_FALSE(app.settings->projects()[0].favorite);

    ui.UiHarness::press(ImGuiMouseButton_Left);
    ui.release(ImGuiMouseButton_Left);
    EXPECT_TRUE(app.settings->projects()[0].favorite);
    EXPECT_EQ(ui.system.launches.size(), 1u);
    EXPECT_FALSE(ImGui::GetCurrentContext()->NavCursorVisible) << "a click ends the ring";
}

} // namespace
