#pragma once

// Runs a sign-in flow against a strict identity provider on loopback. The recording operating system keeps the
// addresses that the flow opens in the browser.

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <utility>

#include <gtest/gtest.h>
#include <httplib.h>

#include "config/launcher_settings.h"
#include "sandbox/browser.h"
#include "sandbox/identity_provider.h"
#include "signin/sign_in_flow.h"
#include "support/eventually.h"
#include "support/recording_system.h"
#include "support/scoped_environment.h"
#include "support/temporary_folder.h"
#include "support/trusted_authority.h"
#include "system/http.h"

class SignInTest : public testing::Test {
  protected:
    SignInTest() {
        recordingSystem() = {};
        recordingSystem().userDataDirectory = folder_.string();
        startNextRun();
    }

    void TearDown() override {
        flow_.reset();
        EXPECT_TRUE(eventually([] { return unfinishedRequests() == 0; })); // because requests read the environment
    }

    // Simulates the next run of the launcher: reads the settings from disk again.
    void startNextRun() {
        flow_.reset();
        settings_ = std::make_unique<LauncherSettings>();
        (void)settings_->load();
        flow_ = std::make_unique<SignInFlow>("sandbox-client", "sandbox-secret", settings_.get());
    }

    void storeSession(const std::string& refreshToken) {
        settings_->setRefreshToken(refreshToken);
        settings_->setUserName("Old Name");
        settings_->setUserEmail("old@test");
        settings_->save();
    }

    // Returns the refresh token, name and e-mail address that the next run would find.
    static std::string storedSession() {
        LauncherSettings onDisk;
        (void)onDisk.load();
        return onDisk.refreshToken() + "|" + onDisk.userName() + "|" + onDisk.userEmail();
    }

    // Returns the web address that the flow opened last.
    static std::string openedUrl() { return recordingSystem().openedUrls.back(); }

    // Opens this address in the sandbox's browser, in which the user allows or denies the sign-in.
    BrowserVisit visit(bool allow = true) { return signInWithBrowser(openedUrl(), trust_.rootFile(), allow); }

    void pollUntil(SignInState expected) {
        EXPECT_TRUE(eventually([&] {
            flow_->pollSignIn();
            return flow_->state == expected;
        })) << flow_->errorMessage;
    }

    TemporaryFolder folder_;
    TrustedAuthority trust_;
    IdentityProvider provider_{TrustedAuthority::authority(),
                               {.userName = "Ada \"L\" \xC3\xBC", .userEmail = "ada@sandbox.test"}};
    ScopedEnvironment port_{"VOLO_SANDBOX_IDENTITY_PORT", std::to_string(provider_.port())};
    std::unique_ptr<LauncherSettings> settings_;
    std::unique_ptr<SignInFlow> flow_; // destroyed first, because its worker uses the other members
};
