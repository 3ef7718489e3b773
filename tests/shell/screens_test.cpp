// Which screen is shown, how the screens scale, and the Downloads screen with real downloads.

#include <algorithm>
#include <array>
#include <atomic>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "install/format_bytes.h"
#include "shell/user_initials.h"
#include "shell/widgets.h"
#include "signin/picture_crop.h"
#include "support/eventually.h"
#include "support/tls_server.h"
#include "support/trusted_authority.h"
#include "support/ui_harness.h"
#include "ui/ui_theme.h"

namespace {

constexpr const char* kNoServer = "https://127.0.0.1:1/manifest";

TEST(Routing, TheScreenFollowsTheStateOfTheSignIn) {
    UiHarness ui;
    ui.configure(kNoServer);
    LauncherApp& app = ui.start();
    const struct {
        SignInState state;
        const char* item; // on no other screen
    } cases[] = {
        {SignInState::SignedOut, "Sign in"},
        {SignInState::SigningIn, "Cancel"},
        {SignInState::RestoringSession, "Sign out"},
        {SignInState::SignedIn, "Sign out"},
    };
    for (const auto& shown : cases) {
        app.signIn->state = shown.state;
        ui.frame();
        for (const char* item : {"Sign in", "Cancel", "Sign out"})
            EXPECT_EQ(ui.rect(kRoot, {item}).has_value(), item == std::string(shown.item)) << item << shown.item;
    }
}

TEST(Routing, WithoutAConfigurationThereIsOnlyTheCard) {
    UiHarness ui;
    const LauncherApp& app = ui.start();
    ui.frames(2);
    EXPECT_FALSE(app.signIn || app.install);
    EXPECT_FALSE(ui.rect(kRoot, {"Sign in"}) || ui.rect(kRoot, {"Sign out"}));
}

TEST(Routing, EverySignInChecksForUpdatesOnce) {
    UiHarness ui;
    LauncherApp& app = ui.startSignedIn(kNoServer);
    ui.frame();
    EXPECT_TRUE(app.updateCheckStarted);
    ASSERT_TRUE(eventually([&] { return app.install->status() == EditorInstallStatus::Failed; }));
    EXPECT_FALSE(app.attentionWanted);
    app.pendingOpenProjectPath = "/a/project that waits.zantorproj";
    ui.frame();
    EXPECT_TRUE(app.attentionWanted) << "the install that a project waited for has ended";
    ui.frames(3);
    ui.key(ImGuiKey_Escape); // closes the popup that tells so
    ui.frames(3);

    ASSERT_TRUE(ui.click(kRoot, {"Installs"}));
    ASSERT_TRUE(ui.click(kRoot, {"Sign out"}));
    ui.frame();
    EXPECT_TRUE(ui.rect(kRoot, {"Sign in"}));
    EXPECT_FALSE(app.updateCheckStarted);

    ui.installEditor(); // so that the second check ends in another status
    app.signIn->state = SignInState::SignedIn;
    ui.frame();
    EXPECT_EQ(app.activeTab, LauncherTab::Installs) << "the tab is kept";
    EXPECT_TRUE(eventually([&] { return app.install->status() == EditorInstallStatus::InstalledOffline; }));
}

TEST(Routing, AnyOtherTabValueShowsTheDownloads) {
    UiHarness ui;
    LauncherApp& app = ui.startSignedIn();
    for (const int value : {0, 1, 2, 3, -1}) {
        app.activeTab = static_cast<LauncherTab>(value);
        ui.frame();
        EXPECT_EQ(ui.rect(kRoot, {"Open downloads folder"}).has_value(), value != 0 && value != 1) << value;
    }
    ASSERT_TRUE(ui.click(kRoot, {"Open downloads folder"}));
    EXPECT_EQ(recordingSystem().openedFolders, std::vector<std::string>{(ui.launcher / "downloads").string()});
}

// Fixed sizes and places double at scale 2. Something that is not scaled, or is scaled twice, does not.
TEST(Layout, DoublesAtScaleTwo) {
    UiHarness ui;
    LauncherApp& app = ui.startSignedIn();
    app.settings->setProjects({ui.makeProject("a", 2), ui.makeProject("b", 1)});
    app.noticeText = "notice";
    const auto rectangles = [&](float scale) {
        std::vector<ImRect> found;
        ui.resize(900, 560, scale);
        for (const LauncherTab tab : {LauncherTab::Projects, LauncherTab::Installs, LauncherTab::Downloads}) {
            app.activeTab = tab;
            ui.frames(2);
            for (const char* item :
                 {"Installs", "Sign out", "+ New project", "Add project from disk", "##ProjectSearch",
                  "##header_star_sort", "Check for updates", "Open downloads folder"})
                if (const auto rect = ui.rect(kRoot, {item})) found.push_back(*rect);
            for (const char* item : {"##project_row", "##star_toggle", "##dots_menu"})
                if (const auto rect = ui.rect(kProjectList, {1, item})) found.push_back(*rect);
        }
        return found;
    };
    const std::vector<ImRect> normal = rectangles(1.0f), doubled = rectangles(2.0f);
    ASSERT_EQ(normal.size(), doubled.size());
    ASSERT_GT(normal.size(), 12u);
    for (std::size_t i = 0; i < normal.size(); ++i) {
        const ImVec2 offMin = doubled[i].Min - normal[i].Min * 2.0f, offMax = doubled[i].Max - normal[i].Max * 2.0f;
        for (const float off : {offMin.x, offMin.y, offMax.x, offMax.y})
            EXPECT_NEAR(off, 0.0f, 1.01f) << i;
        EXPECT_TRUE(ImRect(0, 0, 900, 560).Contains(normal[i])) << i << " is outside the smallest window";
    }
}

TEST(List, ItsScrollBarTakesNoWidthAndMovesTheRows) {
    UiHarness ui;
    LauncherApp& app = ui.startSignedIn();
    app.settings->setProjects(std::vector<ProjectEntry>(100, ui.makeProject("a", 1)));
    ui.frames(3);
    const ImRect row = *ui.rect(kProjectList, {0, "##project_row"});
    EXPECT_FLOAT_EQ(row.Max.x, 1180.0f - 16.0f);
    ui.moveTo({1180.0f - 8.0f, row.GetCenter().y});
    ui.press(ImGuiMouseButton_Left);
    ui.moveTo({1180.0f - 8.0f, 730.0f});
    ui.release(ImGuiMouseButton_Left);
    ui.frame();
    EXPECT_FALSE(ui.rect(kProjectList, {0, "##project_row"}));
    EXPECT_TRUE(ui.rect(kProjectList, {99, "##project_row"}));
}

TEST(List, ACutTextHasATooltip) {
    UiHarness ui;
    LauncherApp& app = ui.startSignedIn();
    app.settings->setProjects({ui.makeProject("a", 2), ui.makeProject(std::string(200, 'b'), 1)});
    ui.frames(2);
    for (const int index : {0, 1}) {
        ui.moveTo(ui.rect(kProjectList, {index, "##project_row"})->Min + ImVec2(80.0f, 26.0f));
        ui.frames(60);
        EXPECT_EQ(ui.popupOpen("##Tooltip_00"), index == 1);
    }
}

TEST(Shell, AProgressBarShowsADotForASmallPart) {
    UiFrames frames;
    const auto filledWidth = [&](float fraction) {
        float left = 100.0f, right = 0.0f;
        frames.build([&](ImDrawList& list) {
            drawProgressBar(&list, {0.0f, 0.0f}, {100.0f, 8.0f}, fraction);
            for (const ImDrawVert& corner : list.VtxBuffer) {
                if (corner.col != uiThemeForeground()) continue;
                left = std::min(left, corner.pos.x);
                right = std::max(right, corner.pos.x);
            }
        });
        return std::max(0.0f, right - left);
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

// An update server. Every manifest offers a new version, and no package can be downloaded.
struct Releases : UiHarness {
    Releases() {
        server = std::make_unique<TlsServer>(TrustedAuthority::loopback(), [this](TlsConnection& c) { answer(c); });
        startSignedIn("https://127.0.0.1:" + std::to_string(server->port()) + "/manifest").updateCheckStarted = true;
        app->activeTab = LauncherTab::Downloads;
    }
    ~Releases() {
        app.reset();
        server.reset();
    }
    void answer(TlsConnection& connection) {
        const bool package = connection.readRequest().starts_with("GET /package");
        if (!package) {
            connection.write(httpAnswer(200, R"({"version":")" + std::to_string(++version) +
                                                 R"(","url":"https://127.0.0.1:)" + std::to_string(server->port()) +
                                                 R"(/package"})"));
        } else if (stallPackages) {
            connection.write("HTTP/1.1 200 OK\r\nContent-Length: 2048\r\n\r\nsome");
            while (connection.write("x") && connection.pause(5)) {
            }
        } else {
            connection.write(httpAnswer(503, "no package"));
        }
    }
    bool failedRuns(std::size_t rows) {
        return eventually([&] {
            return app->install->status() == EditorInstallStatus::Failed &&
                   app->install->downloadsSnapshot().size() == rows;
        });
    }
    std::vector<std::string> versions() const {
        std::vector<std::string> found;
        for (const DownloadRecord& record : app->install->downloadsSnapshot())
            found.push_back(record.version);
        return found;
    }
    TrustedAuthority trust;
    std::atomic<int> version = 0;
    std::atomic<bool> stallPackages = false;
    std::unique_ptr<TlsServer> server;
};

TEST(Downloads, TheButtonsOfARowActOnThatRow) {
    Releases ui;
    LauncherApp& app = *ui.app;
    ui.frame();
    EXPECT_FALSE(ui.rect(kDownloadList, {0, "dl_badge"})) << "no download yet";
    app.install->startUpdate();
    ASSERT_TRUE(ui.failedRuns(1)) << app.install->statusMessage();
    for (const std::size_t rows : {2, 3}) {
        ui.frames(2);
        ASSERT_TRUE(ui.click(kDownloadList, {0, "Retry"}));
        ASSERT_TRUE(ui.failedRuns(rows));
    }
    ui.frames(2);
    EXPECT_EQ(ui.versions(), (std::vector<std::string>{"3", "2", "1"}));

    const ImRect first = *ui.rect(kDownloadList, {0, "Show"}), second = *ui.rect(kDownloadList, {1, "Show"});
    EXPECT_FLOAT_EQ(second.Min.y - first.Min.y, 70.0f) << "Dear ImGui's item spacing must not separate the rows";
    ASSERT_TRUE(ui.click(kDownloadList, {1, "Show"}));
    EXPECT_EQ(recordingSystem().openedFolders, std::vector<std::string>{(ui.launcher / "downloads").string()});

    const std::string lastFile = app.install->downloadsSnapshot()[2].filePath;
    std::ofstream(lastFile) << "package";
    ASSERT_TRUE(ui.click(kDownloadList, {2, "Delete"}));
    EXPECT_EQ(ui.versions(), (std::vector<std::string>{"3", "2"}));
    EXPECT_FALSE(std::filesystem::exists(lastFile));
    ASSERT_TRUE(ui.click(kDownloadList, {0, "Delete"})); // the list becomes shorter in the middle of the frame
    EXPECT_EQ(ui.versions(), std::vector<std::string>{"2"});
}

TEST(Downloads, ARunningTransferOffersOnlyCancel) {
    Releases ui;
    ui.stallPackages = true;
    ui.app->install->startUpdate();
    ASSERT_TRUE(eventually([&] { return ui.app->install->downloadedBytes() > 0; }));
    ui.frames(2);
    EXPECT_FALSE(ui.rect(kDownloadList, {0, "Delete"}));
    ASSERT_TRUE(ui.click(kDownloadList, {0, "Cancel"}));
    EXPECT_TRUE(eventually([&] { return ui.app->install->status() != EditorInstallStatus::Downloading; }));
}

} // namespace
