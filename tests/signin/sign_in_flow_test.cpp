// Whole sign-ins against a strict provider, and what is left of one that was abandoned.

#include "sandbox/identity_provider.h"
#include "sign_in_fixture.h"

namespace {

using Events = std::vector<std::string>;

class SignIn : public SignInTest {
  protected:
    SignIn() { useProvider(provider_.port()); }

    BrowserVisit visit(bool allow = true) { return signInWithBrowser(openedUrl(), trust_.rootFile(), allow); }

    IdentityProvider provider_{TrustedAuthority::authority(),
                               {.userName = "Ada \"L\" \xC3\xBC", .userEmail = "ada@sandbox.test"}};
};

TEST_F(SignIn, BrowserRoadSignsInAndTheNextRunRestoresIt) {
    EXPECT_EQ(flow_->state, SignInState::SignedOut);
    flow_->errorMessage = "an old one";
    flow_->failedOnRestore = true;
    flow_->startSignIn();
    EXPECT_EQ(flow_->state, SignInState::SigningIn);
    EXPECT_EQ(flow_->errorMessage, "");
    EXPECT_FALSE(flow_->failedOnRestore);

    const BrowserVisit visited = visit();
    EXPECT_EQ(visited.error, "");
    EXPECT_EQ(visited.iconStatus, 404);
    EXPECT_NE(visited.finalPage.find("<h2>Sign-in complete</h2>"), std::string::npos);
    pollUntilSettled();
    EXPECT_EQ(flow_->state, SignInState::SignedIn) << flow_->errorMessage;
    EXPECT_EQ(flow_->userName, "Ada \"L\" \xC3\xBC");
    EXPECT_EQ(flow_->userEmail, "ada@sandbox.test");
    EXPECT_EQ(provider_.events(), (Events{"consent", "code", "token", "userinfo"}));
    const std::string stored = storedSession();
    EXPECT_TRUE(stored.starts_with("1//0") && stored.ends_with("|Ada \"L\" \xC3\xBC|ada@sandbox.test")) << stored;
    const int port = std::atoi(visited.redirect.c_str() + std::string("http://127.0.0.1:").size());
    EXPECT_FALSE(redirect(port, "?error=reload")) << "a reload of the page must find nobody";
    pollSomeFrames();
    EXPECT_EQ(flow_->state, SignInState::SignedIn);

    provider_.setFaults({.rotateRefreshToken = true});
    newFlow();
    EXPECT_EQ(flow_->userEmail, "ada@sandbox.test") << "known before anything is restored";
    flow_->restoreSession();
    EXPECT_EQ(flow_->state, SignInState::RestoringSession);
    pollUntilSettled();
    EXPECT_EQ(flow_->state, SignInState::SignedIn) << flow_->errorMessage;
    EXPECT_EQ(storedSession(), stored) << "a rotated token is ignored";

    flow_->signOut();
    EXPECT_EQ(flow_->state, SignInState::SignedOut);
    EXPECT_EQ(flow_->userName + flow_->userEmail + flow_->errorMessage, "");
    EXPECT_EQ(storedSession(), "||");
    flow_->restoreSession();
    EXPECT_EQ(flow_->state, SignInState::SignedOut) << "nothing to restore";
}

TEST_F(SignIn, AuthorizationUrlIsExact) {
    flow_ = std::make_unique<SignInFlow>("id-_.~/with blank&\xC3\xBC", "secret", settings_.get());
    flow_->startSignIn();
    const std::string url = openedUrl();
    const std::string challenge = queryValue(url, "code_challenge");
    const std::string state = queryValue(url, "state");
    EXPECT_EQ(challenge.size(), 43u);
    EXPECT_EQ(state.size(), 22u);
    EXPECT_EQ(url, provider_.authorizationUrl() + "?client_id=id-_.~%2Fwith%20blank%26%C3%BC" +
                       "&redirect_uri=http%3A%2F%2F127.0.0.1%3A" + std::to_string(listenerPort(url)) +
                       "&response_type=code&scope=openid%20email%20profile&code_challenge=" + challenge +
                       "&code_challenge_method=S256&state=" + state + "&access_type=offline");
    flow_->startSignIn();
    const std::string second = openedUrl();
    EXPECT_NE(queryValue(second, "state"), state);
    EXPECT_NE(queryValue(second, "code_challenge"), challenge);
    EXPECT_FALSE(redirect(listenerPort(url), "")) << "the first attempt's listener is gone";
    EXPECT_EQ(signInWithBrowser(second, trust_.rootFile()).error, "the provider refused: HTTP 400")
        << "a client nobody knows";
}

TEST_F(SignIn, RefusedConsentShowsTheReasonAndARightRedirectMayStillFollow) {
    flow_->startSignIn();
    const std::string url = openedUrl();
    EXPECT_EQ(signInWithBrowser(url, trust_.rootFile(), false).error, "");
    pollUntilSettled();
    EXPECT_EQ(flow_->state, SignInState::SignedOut);
    EXPECT_EQ(flow_->errorMessage, "Google sign-in was not completed (access_denied).");
    EXPECT_FALSE(flow_->failedOnRestore);
    EXPECT_EQ(signInWithBrowser(url, trust_.rootFile()).error, "");
    EXPECT_TRUE(pollUntil([&] { return flow_->state == SignInState::SignedIn; }));
    EXPECT_EQ(flow_->errorMessage, "");
}

TEST_F(SignIn, ResultOfAnAbandonedAttemptIsDropped) {
    for (const auto& [restore, signOut] : {std::pair{false, false}, {true, true}, {true, false}}) {
        const std::string token = provider_.issueRefreshToken();
        storeSession(token);
        provider_.setFaults({.tokenDelayMilliseconds = 300});
        if (restore) {
            flow_->restoreSession();
        } else {
            flow_->startSignIn();
            EXPECT_EQ(visit().error, "");
            flow_->pollSignIn(); // takes the code
        }
        const std::size_t before = provider_.events().size();
        signOut ? flow_->signOut() : flow_->cancelSignIn();
        EXPECT_EQ(provider_.events().size(), before + 2) << "the frame waited for both of the worker's requests";
        pollSomeFrames();
        EXPECT_EQ(flow_->state, SignInState::SignedOut);
        EXPECT_EQ(flow_->errorMessage, "");
        EXPECT_EQ(storedSession(), signOut ? "||" : token + "|Old Name|old@test");
    }
}

TEST_F(SignIn, RefusedSessionStaysStoredUntilASignInReplacesIt) {
    storeSession("revoked");
    flow_->restoreSession();
    pollUntilSettled();
    EXPECT_EQ(flow_->errorMessage, "The stored session is no longer valid.");
    pollSomeFrames();
    EXPECT_EQ(provider_.events().size(), 1u) << "no second attempt by itself";

    provider_.setFaults({.withoutRefreshToken = true, .withoutName = true});
    flow_->startSignIn();
    EXPECT_EQ(visit().error, "");
    pollUntilSettled();
    EXPECT_EQ(flow_->state, SignInState::SignedIn) << flow_->errorMessage;
    EXPECT_FALSE(flow_->failedOnRestore);
    EXPECT_EQ(storedSession(), "revoked||ada@sandbox.test") << "no new token keeps the old one; a name may be missing";
}

} // namespace
