#include "signin/sign_in_flow.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "config/launcher_settings.h"
#include "crypto/base64.h"
#include "crypto/random_bytes.h"
#include "crypto/sha256.h"
#include "signin/google_endpoints.h"
#include "signin/token_requests.h"
#include "system/operating_system.h"
#include "system/url.h"

namespace {

constexpr std::size_t kVerifierBytes = 48; // 64 characters in Base64
constexpr std::size_t kStateBytes = 16;    // 22 characters in Base64

std::string redirectUriFor(int port) {
    return "http://127.0.0.1:" + std::to_string(port);
}

std::string authorizationUrl(const std::string& clientId, const std::string& challenge, const SignInAttempt& attempt) {
    return googleEndpoints().authorizationUrl + "?client_id=" + percentEncode(clientId) +
           "&redirect_uri=" + percentEncode(attempt.redirectUri) + "&response_type=code" +
           "&scope=" + percentEncode("openid email profile") + "&code_challenge=" + percentEncode(challenge) +
           "&code_challenge_method=S256" + "&state=" + percentEncode(attempt.oauthState) + "&access_type=offline";
}

} // namespace

SignInFlow::SignInFlow(const std::string& clientId, const std::string& clientSecret, LauncherSettings* settings)
    : userName(settings->userName())
    , userEmail(settings->userEmail())
    , clientId_(clientId)
    , clientSecret_(clientSecret)
    , settings_(settings)
    , mailbox_(std::make_shared<SignInMailbox>()) {}

SignInFlow::~SignInFlow() {
    stopListener();
    abandonAttempt();
    endWorker();
}

// --- browser sign-in -----------------------------------------------------------------------------------------------

void SignInFlow::startSignIn() {
    stopListener();
    endWorker();
    attempt_ = {};
    attempt_.generation = mailbox_->startAttempt();
    errorMessage.clear();
    failedOnRestore = false;
    state = SignInState::SigningIn;

    attempt_.codeVerifier = randomUrlToken(kVerifierBytes);
    attempt_.oauthState = randomUrlToken(kStateBytes);
    const std::vector<std::uint8_t> digest = sha256Bytes(attempt_.codeVerifier);
    const std::string challenge = base64UrlEncode({reinterpret_cast<const char*>(digest.data()), digest.size()});
    if (attempt_.codeVerifier.empty() || challenge.empty() || attempt_.oauthState.empty()) {
        state = SignInState::SignedOut;
        errorMessage = "Failed to prepare the sign-in request.";
        return;
    }
    if (!listener_.start(mailbox_, attempt_)) {
        state = SignInState::SignedOut;
        errorMessage = "Could not open the local sign-in listener.";
        return;
    }
    attempt_.redirectUri = redirectUriFor(listener_.port());
    attempt_.authorizationUrl = authorizationUrl(clientId_, challenge, attempt_);
    openUrlInBrowser(attempt_.authorizationUrl);
}

void SignInFlow::cancelSignIn() {
    stopListener();
    abandonAttempt();
    endWorker();
    state = SignInState::SignedOut;
    errorMessage.clear();
}

void SignInFlow::pollSignIn() {
    const auto [code, result] = mailbox_->take();
    if (!code.empty()) {
        const std::string redirectUri = attempt_.redirectUri;
        stopListener();
        startWorker(code, {}, false, redirectUri);
    }
    if (!result.hasResult) return;

    // The listener keeps running after a failed redirect, because a valid redirect may still follow.
    if (!result.success) {
        errorMessage = result.errorMessage;
        state = SignInState::SignedOut;
        if (result.fromRestore) failedOnRestore = true;
        return;
    }
    if (!result.refreshToken.empty()) settings_->setRefreshToken(result.refreshToken);
    settings_->setUserName(result.userName);
    settings_->setUserEmail(result.userEmail);
    settings_->save();
    userName = result.userName;
    userEmail = result.userEmail;
    errorMessage.clear();
    failedOnRestore = false;
    state = SignInState::SignedIn;
}

// Stops the listener and puts its port, which is then 0, into the attempt's redirect URI. If a code has arrived before
// cancelSignIn, pollSignIn still exchanges it, with port 0 in the redirect URI.
void SignInFlow::stopListener() {
    listener_.stop();
    attempt_.redirectUri = redirectUriFor(listener_.port());
}

// --- the stored session --------------------------------------------------------------------------------------------

void SignInFlow::restoreSession() {
    const std::string refreshToken = settings_->refreshToken();
    if (refreshToken.empty()) {
        state = SignInState::SignedOut;
        return;
    }
    errorMessage.clear();
    failedOnRestore = false;
    state = SignInState::RestoringSession;
    endWorker();
    mailbox_->discardResult();
    startWorker({}, refreshToken, true, {});
}

void SignInFlow::signOut() {
    stopListener();
    abandonAttempt();
    endWorker();
    settings_->clearSession();
    settings_->save();
    userName.clear();
    userEmail.clear();
    errorMessage.clear();
    failedOnRestore = false;
    state = SignInState::SignedOut;
}

// --- the worker ----------------------------------------------------------------------------------------------------

void SignInFlow::startWorker(const std::string& code, const std::string& refreshToken, bool isRefresh,
                             const std::string& redirectUri) {
    joinWorker(); // the worker that restores a session may still run
    SignInWork work;
    work.mailbox = mailbox_;
    work.clientId = clientId_;
    work.clientSecret = clientSecret_;
    work.code = code;
    work.refreshToken = refreshToken;
    work.isRefresh = isRefresh;
    work.attempt = attempt_;
    work.attempt.redirectUri = redirectUri;
    workerAbort_ = HttpAbort();
    work.abort = workerAbort_;
    workerThread_ = std::thread(runSignInWorker, std::move(work));
}

void SignInFlow::joinWorker() {
    if (workerThread_.joinable()) workerThread_.join();
}

void SignInFlow::endWorker() {
    workerAbort_.abort();
    joinWorker();
}

// Makes the current generation outdated, so that the mailbox drops the worker's result.
void SignInFlow::abandonAttempt() {
    attempt_.generation = mailbox_->abandonAttempt();
}
