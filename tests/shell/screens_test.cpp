// Which screen shows, where things stand on it at both scales, and the Downloads screen driven by real runs.

#include <gtest/gtest.h>

#include "install/format_bytes.h"
#include "shell/user_initials.h"
#include "signin/picture_crop.h"
#include "support/eventually.h"
#include "support/tls_server.h"
#include "support/trusted_authority.h"
#include "support/ui_harness.h"

namespace {

constexpr const char* kNoServer = "https://127.0.0.1:1/manifest";

bool shellShows(const UiHarness& ui) {
    return ui.rect(kRoot, {"Sign out"}).has_value();
}

bool signInShows(const UiHarness& ui) {
    return ui.rect(kRoot, {"Sign in"}).has_value();
}

TEST(Routing, TheScreenFollowsTheStateOfTheSignIn) {
    UiHarness ui;
    ui.configure(kNoServer);
    LauncherApp& app = ui.start();
    for (const SignInState state :
         {SignInState::SignedOut, SignInState::SigningIn, SignInState::RestoringSession, SignInState::SignedIn}) {
        app.signIn->state = state;
        ui.frame();
        const bool shell = state == SignInState::RestoringSession || state == SignInState::SignedIn;
        EXPECT_EQ(shellShows(ui), shell) << static_cast<int>(state);
        EXPECT_EQ(signInShows(ui), state == SignInState::SignedOut) << static_cast<int>(state);
        EXPECT_EQ(ui.rect(kRoot, {"Cancel"}).has_value(), state == SignInState::SigningIn) << static_cast<int>(state);
    }
}

TEST(Routing, SignOutEndsTheStretchAndTheNextSignInChecksForUpdatesAgain) {
    UiHarness ui;
    LauncherApp& app = ui.startSignedIn(kNoServer);
    ui.frame();
    EXPECT_TRUE(app.updateCheckStarted);
    ASSERT_TRUE(eventually([&] { return app.install->status() == EditorInstallStatus::Failed; }));

    ASSERT_TRUE(ui.click(kRoot, {"Installs"}));
    ASSERT_TRUE(ui.click(kRoot, {"Sign out"}));
    ui.frame();
    EXPECT_TRUE(signInShows(ui));
    EXPECT_FALSE(app.updateCheckStarted) << "only the shell starts a check";

    ui.installEditor(); // a second check ends differently
    app.signIn->state = SignInState::SignedIn;
    ui.frame();
    EXPECT_EQ(app.activeTab, LauncherTab::Installs) << "where it was left";
    EXPECT_TRUE(eventually([&] { return app.install->status() == EditorInstallStatus::InstalledOffline; }));
}

TEST(Routing, DownloadsShowForAnyOtherValueAndHaveNoSidebarRow) {
    UiHarness ui;
    LauncherApp& app = ui.startSignedIn();
    for (const int value : {0, 1, 2, 3, -1}) {
        app.activeTab = static_cast<LauncherTab>(value);
        ui.frame();
        EXPECT_EQ(ui.rect(kRoot, {"Open downloads folder"}).has_value(), value != 0 && value != 1) << value;
    }
    EXPECT_FALSE(ui.rect(kRoot, {"Downloads"}));
    ASSERT_TRUE(ui.click(kRoot, {"Open downloads folder"}));
    EXPECT_EQ(recordingSystem().openedFolders, std::vector<std::string>{(ui.launcher / "downloads").string()});
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

// Rectangles in units, as left, top, width and height; W and H are the window's.
TEST(Geometry, ItemsStandWhereTheyShouldAtEverySizeAndScale) {
    struct Item {
        LauncherTab tab;
        const char* window;
        std::vector<IdStep> path;
        float left, top, width, height;
    };
    UiHarness ui;
    ui.installEditor();
    LauncherApp& app = ui.startSignedIn(kNoServer);
    app.settings->setProjects({ui.makeProject("a", 2), ui.makeProject("b", 1)});
    ui.frame();
    ASSERT_TRUE(eventually([&] { return app.install->status() == EditorInstallStatus::InstalledOffline; }));
    for (const auto& [W, H] : {std::pair{1180.0f, 740.0f}, {900.0f, 560.0f}}) {
        const float list = W - 210 - 32; // the table's inner width
        const std::vector<Item> items = {
            {LauncherTab::Projects, kRoot, {"Projects"}, 12, 16, 186, 36},
            {LauncherTab::Projects, kRoot, {"Installs"}, 12, 58, 186, 36},
            {LauncherTab::Projects, kRoot, {"Sign out"}, 20, H - 52, 170, 28},
            {LauncherTab::Projects, kRoot, {"+ New project"}, W - 150, 16, 126, 32},
            {LauncherTab::Projects, kRoot, {"Add project from disk"}, W - 306, 16, 148, 32},
            {LauncherTab::Projects, kRoot, {"##ProjectSearch"}, W - 524 + 30, 16, 210 - 38, 32},
            {LauncherTab::Projects, kRoot, {"##header_star_sort"}, 210 + 16 + 10, 64 + 3, 24, 24},
            {LauncherTab::Projects, kRoot, {"Name"}, 210 + 16 + 54, 64, -1, 30},
            {LauncherTab::Projects, kRoot, {"Platform"}, 210 + 16 + 0.58f * list, 64, -1, 30},
            {LauncherTab::Projects, kRoot, {"Editor version"}, 210 + 16 + 0.76f * list, 64, -1, 30},
            {LauncherTab::Projects, kProjectList, {0, "##project_row"}, 226, 98, list, 52},
            {LauncherTab::Projects, kProjectList, {1, "##project_row"}, 226, 150, list, 52},
            {LauncherTab::Projects, kProjectList, {1, "##star_toggle"}, 236, 164, 24, 24},
            {LauncherTab::Projects, kProjectList, {1, "##dots_menu"}, 226 + list - 42, 162, 28, 28},
            {LauncherTab::Installs, kRoot, {"Check for updates"}, W - 24 - 160, 16 + 48 + 148 - 44, 144, 30},
            {LauncherTab::Downloads, kRoot, {"Open downloads folder"}, W - 24 - 190, 16, 190, 32}};
        for (const float scale : {1.0f, 2.0f}) {
            ui.resize(W, H, scale);
            for (const Item& item : items) {
                app.activeTab = item.tab;
                ui.frames(2);
                const std::optional<ImRect> found = item.path.size() == 1
                                                        ? ui.rect(item.window, {item.path[0]})
                                                        : ui.rect(item.window, {item.path[0], item.path[1]});
                const std::string name =
                    item.path.back().text + (" at " + std::to_string(W)) + " x" + std::to_string(scale);
                ASSERT_TRUE(found) << name;
                EXPECT_NEAR(found->Min.x, item.left * scale, 1.01f) << name;
                EXPECT_NEAR(found->Min.y, item.top * scale, 1.01f) << name;
                EXPECT_TRUE(item.width < 0 || std::abs(found->GetWidth() - item.width * scale) < 1.01f) << name;
                EXPECT_NEAR(found->GetHeight(), item.height * scale, 1.01f) << name;
            }
        }
    }
    // A notice pushes the table down.
    ui.resize(1180, 740);
    app.activeTab = LauncherTab::Projects;
    app.noticeText = "notice";
    ui.frames(2);
    EXPECT_FLOAT_EQ(ui.rect(kProjectList, {0, "##project_row"})->Min.y, 138.0f);
}

// An update server that offers a new version at each question, and has none of the packages.
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

TEST(Downloads, RowsStandSeventyApartAndTheirButtonsAct) {
    Releases ui;
    LauncherApp& app = *ui.app;
    ui.frame();
    EXPECT_FALSE(ui.rect(kDownloadList, {0, "dl_badge"})) << "no rows in a fresh session";
    app.install->startUpdate();
    ASSERT_TRUE(ui.failedRuns(1)) << app.install->statusMessage();
    for (const std::size_t rows : {2, 3}) {
        ui.frames(2);
        ASSERT_TRUE(ui.click(kDownloadList, {0, "Retry"}));
        ASSERT_TRUE(ui.failedRuns(rows));
    }
    ui.frames(2);
    EXPECT_EQ(ui.versions(), (std::vector<std::string>{"3", "2", "1"}));

    const float width = 1180 - 210 - 48, top = 64;
    for (int row = 0; row < 3; ++row) {
        for (const auto& [label, fromRight, buttonWidth] :
             {std::tuple{"Retry", 230.0f, 70.0f}, {"Show", 150.0f, 65.0f}, {"Delete", 75.0f, 65.0f}}) {
            const std::optional<ImRect> button = ui.rect(kDownloadList, {row, label});
            ASSERT_TRUE(button) << label << row;
            EXPECT_FLOAT_EQ(button->Min.x, 234 + width - fromRight) << label << row;
            EXPECT_FLOAT_EQ(button->Min.y, top + 70.0f * static_cast<float>(row) + 16) << label << row;
            EXPECT_FLOAT_EQ(button->GetWidth(), buttonWidth);
        }
    }
    ASSERT_TRUE(ui.click(kDownloadList, {1, "Show"}));
    EXPECT_EQ(recordingSystem().openedFolders, std::vector<std::string>{(ui.launcher / "downloads").string()});

    const std::string lastFile = app.install->downloadsSnapshot()[2].filePath;
    std::ofstream(lastFile) << "package";
    ASSERT_TRUE(ui.click(kDownloadList, {2, "Delete"}));
    EXPECT_EQ(ui.versions(), (std::vector<std::string>{"3", "2"}));
    EXPECT_FALSE(std::filesystem::exists(lastFile));
    ASSERT_TRUE(ui.click(kDownloadList, {0, "Delete"})); // rows below are drawn from the shorter list
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
