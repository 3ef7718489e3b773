// Which screen shows, and what the shell starts when it shows.

#include <gtest/gtest.h>

#include "support/eventually.h"
#include "support/scoped_environment.h"
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

TEST(Routing, AnUnusableConfigurationHasNoSubsystemsAndNoControls) {
    UiHarness ui;
    LauncherApp& app = ui.start();
    ui.frames(3);
    EXPECT_EQ(app.signIn, nullptr);
    EXPECT_EQ(app.install, nullptr);
    EXPECT_FALSE(app.config->message.empty());
    EXPECT_FALSE(shellShows(ui) || signInShows(ui));
}

TEST(Routing, AStoredTokenShowsTheShellAtOnceAndAFailedRestoreLeavesIt) {
    UiHarness ui;
    const TrustedAuthority trust;
    auto provider = std::make_unique<TlsServer>(TrustedAuthority::loopback(), [](TlsConnection& c) { c.stall(); });
    const ScopedEnvironment port("VOLO_SANDBOX_IDENTITY_PORT", std::to_string(provider->port()));
    ui.configure();
    ui.folder.write("data/Launcher.conf", "[General]\nauth%2FrefreshToken=token\n");
    LauncherApp& app = ui.start();
    ui.frame();
    EXPECT_TRUE(app.sessionRestoreStarted);
    EXPECT_EQ(app.signIn->state, SignInState::RestoringSession);
    EXPECT_TRUE(shellShows(ui));

    provider.reset(); // the provider goes away without an answer
    EXPECT_TRUE(eventually([&] {
        ui.frame();
        return signInShows(ui);
    }));
    EXPECT_TRUE(app.signIn->failedOnRestore);
    EXPECT_FALSE(app.signIn->errorMessage.empty());
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
    const auto failed = [&] { return app.install->status() == EditorInstallStatus::Failed; };
    ASSERT_TRUE(eventually(failed));

    ASSERT_TRUE(ui.click(kRoot, {"Installs"}));
    EXPECT_EQ(app.activeTab, LauncherTab::Installs);
    ASSERT_TRUE(ui.click(kRoot, {"Sign out"}));
    EXPECT_FALSE(app.updateCheckStarted);
    EXPECT_EQ(app.signIn->state, SignInState::SignedOut);
    ui.frame();
    EXPECT_TRUE(signInShows(ui));
    EXPECT_FALSE(app.updateCheckStarted) << "only the shell starts a check";

    ui.installEditor(); // a second check ends differently
    app.signIn->state = SignInState::SignedIn;
    ui.frame();
    EXPECT_EQ(app.activeTab, LauncherTab::Installs);
    EXPECT_TRUE(eventually([&] { return app.install->status() == EditorInstallStatus::InstalledOffline; }));
}

TEST(Routing, ASidebarClickShowsTheOtherScreenInTheSameFrame) {
    UiHarness ui;
    LauncherApp& app = ui.startSignedIn();
    ui.frame();
    const std::optional<ImRect> installs = ui.rect(kRoot, {"Installs"});
    ASSERT_TRUE(installs);
    EXPECT_TRUE(ui.rect(kRoot, {"##ProjectSearch"}));
    ui.moveTo(installs->GetCenter());
    ui.press(ImGuiMouseButton_Left);
    EXPECT_EQ(app.activeTab, LauncherTab::Projects);
    ui.release(ImGuiMouseButton_Left);
    EXPECT_EQ(app.activeTab, LauncherTab::Installs);
    EXPECT_FALSE(ui.rect(kRoot, {"##ProjectSearch"}));
    EXPECT_TRUE(ui.rect(kRoot, {"install_badge"}));
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

} // namespace
