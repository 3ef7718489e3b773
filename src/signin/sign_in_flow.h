#pragma once

// Signs the user in with a Google account through the system's browser: authorization code with PKCE (RFC 7636), a
// redirect to a loopback listener (RFC 8252), and a worker thread that fetches tokens and user information.
//
// Frame thread only. Results of other threads arrive in a mailbox that pollSignIn empties at the top of every frame.
// startSignIn, cancelSignIn, signOut, restoreSession and the destructor abort the worker's requests and join it.
// Failures appear in `state` and `errorMessage`.

#include <cstdint>
#include <memory>
#include <string>
#include <thread>

#include "signin/loopback_listener.h"
#include "signin/sign_in_attempt.h"
#include "signin/sign_in_mailbox.h"
#include "system/http.h"

class LauncherSettings;

enum class SignInState : std::uint32_t { SignedOut = 0, RestoringSession = 1, SigningIn = 2, SignedIn = 3 };

class SignInFlow {
  public:
    // `settings` is borrowed and outlives the flow.
    SignInFlow(const std::string& clientId, const std::string& clientSecret, LauncherSettings* settings);
    ~SignInFlow();
    SignInFlow(const SignInFlow&) = delete;
    SignInFlow& operator=(const SignInFlow&) = delete;

    void startSignIn();
    void cancelSignIn();
    void pollSignIn();
    void restoreSession(); // with the stored refresh token
    void signOut();        // on this machine only; the tokens are not revoked

    // The page that the browser opens. The user can open it by hand if the browser did not.
    [[nodiscard]] const std::string& browserAddress() const { return attempt_.authorizationUrl; }

    SignInState state = SignInState::SignedOut;
    std::string userName;
    std::string userEmail;
    std::string errorMessage;     // what the sign-in screen shows; empty means no error
    bool failedOnRestore = false; // the last failure came from restoring a stored session

  private:
    void stopListener();
    void startWorker(const std::string& code, const std::string& refreshToken, bool isRefresh,
                     const std::string& redirectUri);
    void joinWorker();
    void endWorker();
    void abandonAttempt();

    const std::string clientId_;
    const std::string clientSecret_;
    LauncherSettings* const settings_;
    SignInAttempt attempt_; // the current one
    std::shared_ptr<SignInMailbox> mailbox_;
    LoopbackListener listener_;
    HttpAbort workerAbort_;    // of the current worker
    std::thread workerThread_; // joinable until the next operation joins it
};
