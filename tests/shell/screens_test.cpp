// Tests which screen is shown, how the screens scale, and what the Downloads screen offers.

#include <algorithm>
#include <array>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "install/format_bytes.h"
#include "shell/user_initials.h"
#include "shell/widgets.h"
#include "signin/picture_crop.h"
#include "support/eventually.h"
#include "support/ui_harness.h"
#include "ui/ui_theme.h"

namespace {

constexpr const char* kNoServer = "https://127.0.0.1:1/manifest";

struct Screens : testing::Test, UiHarness {};
using Routing = Screens;
using Layout = Screens;
using List = Screens;

TEST_F(Routing, TheScreenFollowsTheStateOfTheSignIn) {
    start();
    frames(2);
    EXPECT_FALSE(app->signIn || app->install) << "there is no configuration";
    EXPECT_FALSE(rect(kRoot, {"Sign in"}) || rect(kRoot, {"Sign out"}));
    configure(kNoServer);
    start();
    const struct {
        SignInState state;
        const char* item; // the only one of the three items that this screen has
    } cases[] = {
        {SignInState::SignedOut, "Sign in"},
        {SignInState::SigningIn, "Cancel"},
        {SignInState::RestoringSession, "Sign out"},
        {SignInState::SignedIn, "Sign out"},
    };
    for (const auto& shown : cases) {
        app->signIn->state = shown.state;
        frame();
        for (const char* item : {"Sign in", "Cancel", "Sign out"})
            EXPECT_EQ(rect(kRoot, {item}).has_value(), item == std::string(shown.item)) << item << shown.item;
    }
}

TEST_F(Routing, EverySignInChecksForUpdatesOnce) {
    startSignedIn(kNoServer);
    frame();
    EXPECT_TRUE(app->updateCheckStarted);
    ASSERT_TRUE(eventually([&] { return app->install->status() == EditorInstallStatus::Failed; }));

    ASSERT_TRUE(click(kRoot, {"Installs"}));
    ASSERT_TRUE(click(kRoot, {"Sign out"}));
    frame();
    EXPECT_TRUE(rect(kRoot, {"Sign in"}));
    EXPECT_FALSE(app->updateCheckStarted);

    (void)installEditor(); // so that the second check ends in another status
    app->signIn->state = SignInState::SignedIn;
    frame();
    EXPECT_EQ(app->activeTab, LauncherTab::Installs) << "the tab is kept";
    EXPECT_TRUE(eventually([&] { return app->install->status() == EditorInstallStatus::InstalledOffline; }));

    EXPECT_FALSE(app->attentionWanted);
    app->pendingOpenProjectPath = "/a/project that waits.zantorproj";
    frame();
    EXPECT_TRUE(app->attentionWanted) << "the install that a project waited for has ended";
}

// Fixed sizes and places double at scale 2. Something that is not scaled, or is scaled twice, does not.
TEST_F(Layout, DoublesAtScaleTwo) {
    startSignedIn();
    app->settings->setProjects({makeProject("a", 2), makeProject("b", 1)});
    app->noticeText = "notice";
    const auto rectangles = [&](float scale) {
        resize(900, 560, scale);
        frames(2);
        std::vector<ImRect> found;
        for (const char* item : {"Installs", "Sign out", "+ New project", "Add project from disk", "##ProjectSearch"})
            found.push_back(rect(kRoot, {item}).value());
        for (const char* item : {"##project_row", "##star_toggle", "##dots_menu"})
            found.push_back(rect(kProjectList, {1, item}).value());
        return found;
    };
    const std::vector<ImRect> normal = rectangles(1.0f), doubled = rectangles(2.0f);
    for (std::size_t i = 0; i < normal.size(); ++i) {
        EXPECT_LT(ImLengthSqr(doubled[i].Min - normal[i].Min * 2.0f), 2.1f) << i;
        EXPECT_LT(ImLengthSqr(doubled[i].Max - normal[i].Max * 2.0f), 2.1f) << i;
        EXPECT_TRUE(ImRect(0, 0, 900, 560).Contains(normal[i])) << i << " is outside the smallest window";
    }
}

TEST_F(List, ItsScrollBarTakesNoWidthAndMovesTheRows) {
    startSignedIn();
    app->settings->setProjects(std::vector<ProjectEntry>(100, makeProject("a", 1)));
    frames(3);
    const ImRect row = *rect(kProjectList, {0, "##project_row"});
    EXPECT_FLOAT_EQ(row.Max.x, 1180.0f - 16.0f);
    moveTo({1180.0f - 8.0f, row.GetCenter().y});
    press(ImGuiMouseButton_Left);
    moveTo({1180.0f - 8.0f, 730.0f});
    release(ImGuiMouseButton_Left);
    frame();
    EXPECT_FALSE(rect(kProjectList, {0, "##project_row"}));
    EXPECT_TRUE(rect(kProjectList, {99, "##project_row"}));
}

TEST_F(List, ACutTextHasATooltip) {
    startSignedIn();
    app->settings->setProjects({makeProject("a", 2), makeProject(std::string(200, 'b'), 1)});
    frames(2);
    for (const int index : {0, 1}) {
        moveTo(rect(kProjectList, {index, "##project_row"})->Min + ImVec2(80.0f, 26.0f));
        frames(60);
        EXPECT_EQ(popupOpen("##Tooltip_00"), index == 1);
    }
}

TEST(Shell, AProgressBarShowsADotForASmallPart) {
    UiFrames frames;
    const auto filledWidth = [&](float fraction) {
        float width = 0.0f;
        frames.build([&](ImDrawList& list) {
            drawProgressBar(&list, {0.0f, 0.0f}, {100.0f, 8.0f}, fraction);
            for (const ImDrawVert& corner : list.VtxBuffer)
                if (corner.col == uiThemeForeground()) width = std::max(width, corner.pos.x);
        });
        return width;
    };
    for (const auto& [fraction, width] : {std::pair{0.0005f, 0.0f}, {0.002f, 8.0f}, {0.5f, 50.0f}, {1.5f, 100.0f}})
        EXPECT_NEAR(filledWidth(fraction), width, 1.01f) << fraction;
}

TEST(Texts, Initials) {
    const std::pair<std::string, std::string> cases[] = {
        {"Ada Mary Lovelace", "AM"}, {"  ada", "A"}, {"a\tb c", "AC"}, {"   ", "?"}, {"", "?"}, {"Özil x", "\xC3X"},
    };
    for (const auto& [name, initials] : cases)
        EXPECT_EQ(userInitials(name), initials) << name;
}

TEST(Texts, ByteCounts) {
    const std::pair<std::int64_t, std::string> cases[] = {
        {-5, "0 B"},         {1023, "1023 B"},
        {1536, "1.5 KB"},    {1048575, "1024.0 KB"},
        {1048576, "1.0 MB"}, {1099511627776, "1024.0 GB"},
    };
    for (const auto& [count, text] : cases)
        EXPECT_EQ(formatBytes(count), text);
}

TEST(Picture, IsCroppedAndNotDistorted) {
    const struct {
        float panelWidth, panelHeight, width, height;
        std::array<float, 4> crop; // left, top, right, bottom
    } cases[] = {
        {100, 100, 200, 100, {0.32f, 0, 0.82f, 1}}, {90, 100, 100, 100, {0.1f, 0, 1, 1}},
        {82, 100, 100, 100, {0, 0, 0.82f, 1}},      {200, 100, 100, 100, {0, 0.25f, 1, 0.75f}},
        {0, 100, 100, 100, {0, 0, 1, 1}},           {100, 100, 100, 0, {0, 0, 1, 1}},
    };
    for (const auto& c : cases) {
        const PictureCrop crop = cropPicture(c.panelWidth, c.panelHeight, c.width, c.height);
        const float sides[] = {crop.left, crop.top, crop.right, crop.bottom};
        for (std::size_t i = 0; i < 4; ++i)
            EXPECT_NEAR(sides[i], c.crop[i], 1e-5f) << c.panelWidth << " side " << i;
    }
}

// Shows the Downloads screen with the given rows.
struct Downloads : testing::Test, UiHarness {
    void show(std::vector<DownloadRecord> rows) {
        InstallProgress progress;
        progress.downloads = std::move(rows);
        LauncherApp& launcherApp = startSignedIn(kNoServer);
        launcherApp.install = std::make_unique<EditorInstallState>(kNoServer, "", ArtifactAuthenticity(), progress);
        launcherApp.updateCheckStarted = true;
        launcherApp.activeTab = static_cast<LauncherTab>(9); // an unknown tab shows the downloads
        frames(2);
    }
    [[nodiscard]] std::vector<DownloadRecord> records() const { return app->install->downloadsSnapshot(); }
};

TEST_F(Downloads, ARowOffersWhatFitsItsState) {
    const std::vector<std::pair<DownloadStatus, std::string>> cases = {
        {DownloadStatus::Downloading, "Cancel"},       {DownloadStatus::Downloaded, "Show Delete"},
        {DownloadStatus::Installing, "Show Delete"},   {DownloadStatus::Installed, "Show Delete"},
        {DownloadStatus::Failed, "Retry Show Delete"}, {static_cast<DownloadStatus>(9), "Cancel"}};
    for (const auto& [status, offered] : cases) {
        show({{"1", "/nowhere/package.zip", status}});
        for (const std::string label : {"Cancel", "Retry", "Show", "Delete"})
            EXPECT_EQ(rect(kDownloadList, {0, label.c_str()}).has_value(), offered.find(label) != std::string::npos)
                << label << offered;
    }
}

TEST_F(Downloads, TheButtonsOfARowActOnThatRow) {
    const std::filesystem::path package = folder.write("packages/1.zip", "package");
    const DownloadStatus failed = DownloadStatus::Failed;
    show({{"3", "/nowhere/3.zip", failed}, {"2", "/nowhere/2.zip", failed}, {"1", package.string(), failed}});
    const ImRect first = *rect(kDownloadList, {0, "Show"}), second = *rect(kDownloadList, {1, "Show"});
    EXPECT_FLOAT_EQ(second.Min.y - first.Min.y, 70.0f) << "Dear ImGui's item spacing must not separate the rows";
    ASSERT_TRUE(click(kRoot, {"Open downloads folder"}));
    ASSERT_TRUE(click(kDownloadList, {2, "Show"}));
    EXPECT_EQ(recordingSystem().openedFolders,
              (std::vector<std::string>{(launcher / "downloads").string(), package.parent_path().string()}));

    ASSERT_TRUE(click(kDownloadList, {2, "Delete"}));
    EXPECT_FALSE(std::filesystem::exists(package));
    EXPECT_EQ(records().size(), 2u);
    ASSERT_TRUE(click(kDownloadList, {0, "Delete"})); // the list becomes shorter in the middle of the frame
    ASSERT_EQ(records().size(), 1u);
    EXPECT_EQ(records()[0].version, "2");
    EXPECT_EQ(app->install->status(), EditorInstallStatus::Idle);
    ASSERT_TRUE(click(kDownloadList, {0, "Retry"}));
    EXPECT_NE(app->install->status(), EditorInstallStatus::Idle) << "no update was started";
}

} // namespace
