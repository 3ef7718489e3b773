// Tests whole sign-ins, and what an abandoned sign-in leaves behind.

#include <chrono>
#include <memory>
#include <regex>
#include <string>

#include "sign_in_fixture.h"

namespace {

using SignIn = SignInTest;

TEST_F(SignIn, BrowserSignInIsRestoredByTheNextRunUntilSignOut) {
    flow_->startSignIn();
    EXPECT_EQ(flow_->state, SignInState::SigningIn);
    EXPECT_NE(visit().finalPage.find("<h2>Sign-in complete</h2>"), std::string::npos);
    pollUntil(SignInState::SignedIn);
    EXPECT_EQ(flow_->userName, "Ada \"L\" \xC3\xBC");
    EXPECT_EQ(flow_->userEmail, "ada@sandbox.test");
    const std::string stored = storedSession();
    EXPECT_TRUE(stored.starts_with("1//0") && stored.ends_with("|Ada \"L\" \xC3\xBC|ada@sandbox.test")) << stored;
    const std::string onDisk = readFileBytes(folder_ / "Launcher.conf");
    for (const std::string& secret : provider_.secrets())
        EXPECT_TRUE(onDisk.find(secret) == std::string::npos || stored.starts_with(secret)) << secret;

    provider_.setFaults({.rotateRefreshToken = true});
    startNextRun();
    EXPECT_EQ(flow_->userEmail, "ada@sandbox.test") << "known before the session is restored";
    flow_->restoreSession();
    EXPECT_EQ(flow_->state, SignInState::RestoringSession);
    pollUntil(SignInState::SignedIn);
    EXPECT_EQ(storedSession(), stored) << "a new refresh token is ignored";

    flow_->signOut();
    EXPECT_EQ(flow_->state, SignInState::SignedOut);
    EXPECT_EQ(flow_->userName + flow_->userEmail + flow_->errorMessage, "");
    EXPECT_EQ(storedSession(), "||");
    flow_->restoreSession();
    EXPECT_EQ(flow_->state, SignInState::SignedOut) << "there is nothing to restore";
}

TEST_F(SignIn, AuthorizationUrlIsExactAndEachAttemptIsNew) {
    const std::regex exact(R"(https://127\.0\.0\.1:[0-9]+/o/oauth2/v2/auth\?client_id=id-_\.~%2Fwith%20blank%26%C3%BC)"
                           R"(&redirect_uri=http%3A%2F%2F127\.0\.0\.1%3A[0-9]+&response_type=code)"
                           R"(&scope=openid%20email%20profile&code_challenge=([\w-]{43})&code_challenge_method=S256)"
                           R"(&state=([\w-]{22})&access_type=offline)");
    flow_ = std::make_unique<SignInFlow>("id-_.~/with blank&\xC3\xBC", "secret", settings_.get());
    flow_->startSignIn();
    const std::string first = openedUrl();
    flow_->startSignIn();
    const std::string second = openedUrl();
    std::smatch before, after;
    ASSERT_TRUE(std::regex_match(first, before, exact)) << first;
    ASSERT_TRUE(std::regex_match(second, after, exact)) << second;
    EXPECT_NE(before[1], after[1]);
    EXPECT_NE(before[2], after[2]);
}

TEST_F(SignIn, RefusedConsentShowsTheReasonAndAValidRedirectMayStillFollow) {
    flow_->startSignIn();
    EXPECT_EQ(visit(false).error, "");
    pollUntil(SignInState::SignedOut);
    EXPECT_EQ(flow_->errorMessage, "Google sign-in was not completed (access_denied).");
    EXPECT_FALSE(flow_->failedOnRestore);
    const std::string redirect = visit().redirect;
    pollUntil(SignInState::SignedIn);
    EXPECT_EQ(flow_->errorMessage, "");
    EXPECT_FALSE(httplib::Client(redirect.substr(0, redirect.find("/?"))).Get("/?error=reload"))
        << "the listener must end with the code";
}

TEST_F(SignIn, ResultOfAnAbandonedAttemptIsDropped) {
    for (const bool restore : {false, true}) {
        for (const bool signOut : {false, true}) {
            storeSession(provider_.issueRefreshToken());
            const std::string stored = storedSession();
            provider_.setFaults({.tokenDelayMilliseconds = 100000});
            if (restore) {
                flow_->restoreSession();
            } else {
                flow_->startSignIn();
                EXPECT_EQ(visit().error, "");
                flow_->pollSignIn(); // takes the code
            }
            const auto start = std::chrono::steady_clock::now();
            signOut ? flow_->signOut() : flow_->cancelSignIn();
            EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20)) << "waited for the answer";
            flow_->pollSignIn(); // must find no result; the worker has been joined
            EXPECT_EQ(flow_->state, SignInState::SignedOut);
            EXPECT_EQ(flow_->errorMessage, "");
            EXPECT_EQ(storedSession(), signOut ? "||" : stored);
        }
    }
}

TEST_F(SignIn, RefusedSessionStaysStoredUntilASignInReplacesIt) {
    storeSession("revoked");
    flow_->restoreSession();
    pollUntil(SignInState::SignedOut);
    EXPECT_EQ(flow_->errorMessage, "The stored session is no longer valid.");
    EXPECT_TRUE(flow_->failedOnRestore);

    provider_.setFaults({.withoutRefreshToken = true, .withoutName = true});
    flow_->startSignIn();
    EXPECT_EQ(flow_->errorMessage, "");
    EXPECT_FALSE(flow_->failedOnRestore);
    EXPECT_EQ(visit().error, "");
    pollUntil(SignInState::SignedIn);
    EXPECT_EQ(storedSession(), "revoked||ada@sandbox.test") << "without a new token the old one stays";
}

} // namespace
