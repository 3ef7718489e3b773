#include "signin/sign_in_flow.h"

#include <cstdint>
#include <mutex>
#include <utility>
#include <vector>

#include "config/launcher_settings.h"
#include "crypto/base64.h"
#include "crypto/random_bytes.h"
#include "crypto/sha256.h"
#include "signin/google_endpoints.h"
#include "signin/token_requests.h"
#include "system/operating_system.h"
#include "system/percent_encoding.h"

namespace {

constexpr std::size_t kVerifierBytes = 48; // 64 characters
constexpr std::size_t kStateBytes = 16;    // 22 characters

std::string redirectUriFor(int port) {
    return "http://127.0.0.1:" + std::to_string(port);
}

std::string authorizationUrl(const std::string& clientId, const std::string& redirectUri, const std::string& challenge,
                             const std::string& oauthState) {
    return googleEndpoints().authorizationUrl + "?client_id=" + percentEncode(clientId) +
           "&redirect_uri=" + percentEncode(redirectUri) + "&response_type=code" +
           "&scope=" + percentEncode("openid email profile") + "&code_challenge=" + percentEncode(challenge) +
           "&code_challenge_method=S256" + "&state=" + percentEncode(oauthState) + "&access_type=offline";
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
    disownWorker();
    joinWorker();
}

// --- browser sign-in -----------------------------------------------------------------------------------------------

void SignInFlow::startSignIn() {
    stopListener();
    joinWorker();
    {
        const std::lock_guard<std::mutex> lock(mailbox_->mutex);
        ++mailbox_->generation;
        mailbox_->result = {};
        mailbox_->pendingCode.clear();
    }
    errorMessage.clear();
    failedOnRestore = false;
    state = SignInState::SigningIn;

    codeVerifier_ = randomUrlToken(kVerifierBytes);
    const std::string oauthState = randomUrlToken(kStateBytes);
    const std::vector<std::uint8_t> digest = sha256Bytes(codeVerifier_);
    const std::string challenge = base64UrlEncode({reinterpret_cast<const char*>(digest.data()), digest.size()});
    if (codeVerifier_.empty() || challenge.empty() || oauthState.empty()) {
        state = SignInState::SignedOut;
        errorMessage = "Failed to prepare the sign-in request.";
        return;
    }
    if (!listener_.start(mailbox_, oauthState)) {
        state = SignInState::SignedOut;
        errorMessage = "Could not open the local sign-in listener.";
        return;
    }
    openUrlInBrowser(authorizationUrl(clientId_, redirectUriFor(listener_.port()), challenge, oauthState));
}

void SignInFlow::cancelSignIn() {
    stopListener();
    disownWorker();
    joinWorker();
    state = SignInState::SignedOut;
    errorMessage.clear();
}

void SignInFlow::pollSignIn() {
    std::string code;
    SignInResult result;
    {
        const std::lock_guard<std::mutex> lock(mailbox_->mutex);
        if (!mailbox_->pendingCode.empty()) {
            code = std::exchange(mailbox_->pendingCode, {});
            mailbox_->listening = 0; // one code is enough: a second one must not wait for the next frame
        }
        if (mailbox_->result.hasResult) result = std::exchange(mailbox_->result, {});
    }
    if (!code.empty()) {
        const std::string redirectUri = redirectUriFor(listener_.port()); // before stopping, which forgets the port
        stopListener();
        startWorker(code, {}, false, redirectUri);
    }
    if (!result.hasResult) return;

    // A failure leaves the listener alone: a redirect that is right may still follow one that was wrong.
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

void SignInFlow::stopListener() {
    listener_.stop();
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
    joinWorker();
    {
        const std::lock_guard<std::mutex> lock(mailbox_->mutex);
        mailbox_->result = {};
    }
    startWorker({}, refreshToken, true, {});
}

void SignInFlow::signOut() {
    stopListener();
    disownWorker();
    joinWorker();
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
    joinWorker(); // a redirect can overtake a restore that has not ended
    SignInWork work;
    work.mailbox = mailbox_;
    work.clientId = clientId_;
    work.clientSecret = clientSecret_;
    work.code = code;
    work.refreshToken = refreshToken;
    work.isRefresh = isRefresh;
    work.redirectUri = redirectUri;
    work.codeVerifier = codeVerifier_;
    {
        const std::lock_guard<std::mutex> lock(mailbox_->mutex);
        work.generation = mailbox_->generation;
    }
    workerThread_ = std::thread(runSignInWorker, std::move(work));
}

void SignInFlow::joinWorker() {
    if (workerThread_.joinable()) workerThread_.join();
}

void SignInFlow::disownWorker() {
    const std::lock_guard<std::mutex> lock(mailbox_->mutex);
    ++mailbox_->generation;
}
