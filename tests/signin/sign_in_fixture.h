#pragma once

// A sign-in flow with everything around it real: the settings in a folder of the test's own, a certificate authority in
// the trust store, and a browser on PATH that writes down what it was asked to open.

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>

#include <gtest/gtest.h>
#include <httplib.h>

#include "config/launcher_settings.h"
#include "sandbox/browser.h"
#include "signin/sign_in_flow.h"
#include "support/eventually.h"
#include "support/scoped_environment.h"
#include "support/trusted_authority.h"
#include "system/operating_system.h"

#ifdef _WIN32
#include <windows.h>
#endif

class SignInTest : public testing::Test {
  protected:
    SignInTest() {
        stageBrowser();
        newFlow();
    }

    // What the system opens addresses with writes them into the file %OPENED_URL%. (On Windows proper no test comes
    // this far: the user's certificates stay alone, and so does the default browser.)
    void stageBrowser() {
#ifdef _WIN32
        const std::string command = '"' + launcherDirectory() + "\\volo_test_child.exe\" --browser \"%1\"";
        RegSetKeyValueA(HKEY_LOCAL_MACHINE, "Software\\Classes\\https\\shell\\open\\command", nullptr, REG_SZ,
                        command.c_str(), static_cast<DWORD>(command.size() + 1));
#else
        const auto opener = folder_.write("bin/xdg-open", "#!/bin/sh\nprintf '%s\\n' \"$1\" > \"$OPENED_URL\"\n");
        std::filesystem::permissions(opener, std::filesystem::perms::owner_all);
#endif
    }

    // The flow of the next run of the launcher, with the settings as they are on disk.
    void newFlow() {
        flow_.reset();
        settings_ = std::make_unique<LauncherSettings>();
        (void)settings_->load();
        flow_ = std::make_unique<SignInFlow>("sandbox-client", "sandbox-secret", settings_.get());
    }

    // Ahead of every worker: nobody may read the environment while it changes.
    void useProvider(int port) {
        provider_.emplace("VOLO_SANDBOX_IDENTITY_PORT", std::to_string(port));
    }

    void storeSession(const std::string& refreshToken) {
        settings_->setRefreshToken(refreshToken);
        settings_->setUserName("Old Name");
        settings_->setUserEmail("old@test");
        ASSERT_TRUE(settings_->save());
        newFlow();
    }

    // The address that the browser was last asked to open; waits for it, and forgets it.
    std::string openedUrl() {
        std::string url;
        EXPECT_TRUE(eventually([&] {
            url = readFileBytes(openedFile_);
            return url.ends_with('\n');
        }));
        std::filesystem::remove(openedFile_);
        if (!url.empty()) url.pop_back();
        return url;
    }
    static std::string queryValue(const std::string& url, const std::string& key) {
        const std::size_t start = url.find("&" + key + "=");
        if (start == std::string::npos) return {};
        const std::size_t begin = start + key.size() + 2;
        return url.substr(begin, url.find('&', begin) - begin);
    }
    static int listenerPort(const std::string& url) {
        const std::string redirect = queryValue(url, "redirect_uri");
        return std::atoi(redirect.c_str() + redirect.rfind("%3A") + 3);
    }

    // What a browser asks of the listener; false when nobody answered.
    static bool redirect(int port, const std::string& query) {
        httplib::Client client("127.0.0.1", port);
        return static_cast<bool>(client.Get("/" + query));
    }

    // Frames until something holds, or until the flow rests.
    template<class Condition>
    [[nodiscard]] bool pollUntil(const Condition& condition) {
        return eventually([&] {
            flow_->pollSignIn();
            return condition();
        });
    }
    void pollUntilSettled() {
        EXPECT_TRUE(pollUntil(
            [this] { return flow_->state == SignInState::SignedIn || flow_->state == SignInState::SignedOut; }));
    }
    void pollSomeFrames() {
        for (int i = 0; i < 20; ++i) {
            flow_->pollSignIn();
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
    }
    // A whole browser sign-in with a code of the test's making.
    void signInWithCode(const std::string& code) {
        flow_->startSignIn();
        const std::string url = openedUrl();
        EXPECT_TRUE(redirect(listenerPort(url), "?state=" + queryValue(url, "state") + "&code=" + code));
        pollUntilSettled();
    }

    // What the next run would find: token, name and address.
    static std::string storedSession() {
        LauncherSettings onDisk;
        (void)onDisk.load();
        return onDisk.refreshToken() + "|" + onDisk.userName() + "|" + onDisk.userEmail();
    }

    TemporaryFolder folder_;
    TrustedAuthority trust_;
    const std::filesystem::path openedFile_ = folder_ / "opened";
    ScopedEnvironment applicationData_{"APPDATA", (folder_ / "appdata").string()};
    ScopedEnvironment path_{"PATH", (folder_ / "bin").string()};
    ScopedEnvironment opened_{"OPENED_URL", openedFile_.string()};
    ScopedEnvironment port_{"VOLO_SANDBOX_IDENTITY_PORT"};
    std::optional<ScopedEnvironment> provider_;
    std::unique_ptr<LauncherSettings> settings_;
    std::unique_ptr<SignInFlow> flow_; // last: its worker ends before the environment is put back
};
