#pragma once

// Signs the user in with a Google account in the system's browser. It uses an authorization code with PKCE (RFC 7636),
// a redirect to a loopback listener (RFC 8252), and a worker thread that requests tokens and user information.
//
// Main thread only. Other threads report to a mailbox, which pollSignIn empties at the start of each frame.
// startSignIn, cancelSignIn, signOut, restoreSession and the destructor abort the worker's requests and join the
// worker. `state` and `errorMessage` show failures.

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
    // `settings` must outlive this object.
    SignInFlow(const std::string& clientId, const std::string& clientSecret, LauncherSettings* settings);
    ~SignInFlow();
    SignInFlow(const SignInFlow&) = delete;
    SignInFlow& operator=(const SignInFlow&) = delete;

    void startSignIn();
    void cancelSignIn();
    void pollSignIn();
    void restoreSession(); // signs in with the stored refresh token
    void signOut();        // on this machine only; the tokens are not revoked

    // Returns the address that the browser opens. The user can copy it if no browser has opened.
    [[nodiscard]] const std::string& browserAddress() const { return attempt_.authorizationUrl; }

    SignInState state = SignInState::SignedOut;
    std::string userName;
    std::string userEmail;
    std::string errorMessage;     // for the user; empty: no error
    bool failedOnRestore = false; // true: the last failure happened while a stored session was restored

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
    SignInAttempt attempt_; // the current attempt
    std::shared_ptr<SignInMailbox> mailbox_;
    LoopbackListener listener_;
    HttpAbort workerAbort_;    // aborts the requests of the current worker
    std::thread workerThread_; // stays joinable after it has ended, until the next operation joins it
};
