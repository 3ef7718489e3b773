#pragma once

// Sends the requests to Google that follow the browser's redirect or restore a session. They exchange a code or a
// stored refresh token for an access token, and request the account's name and e-mail address. Blocking HTTPS; sign-in
// worker only. This code writes no file and no log.

#include <memory>
#include <string>

#include "signin/sign_in_attempt.h"
#include "signin/sign_in_mailbox.h"
#include "system/http.h"

struct TokenResponse {
    bool ok = false;
    std::string accessToken;
    std::string refreshToken; // may be empty; always empty from refreshAccessToken
    std::string errorMessage; // for the user, if `ok` is false
};

[[nodiscard]] TokenResponse exchangeCodeForTokens(const std::string& clientId, const std::string& clientSecret,
                                                  const std::string& code, const std::string& redirectUri,
                                                  const std::string& codeVerifier, const HttpAbort& abort = {});

[[nodiscard]] TokenResponse refreshAccessToken(const std::string& clientId, const std::string& clientSecret,
                                               const std::string& refreshToken, const HttpAbort& abort = {});

// The worker's input. The worker owns the copy.
struct SignInWork {
    std::shared_ptr<SignInMailbox> mailbox;
    std::string clientId;
    std::string clientSecret;
    std::string code;         // empty when a session is restored
    std::string refreshToken; // empty for a browser sign-in
    bool isRefresh = false;   // true: restore the stored session
    HttpAbort abort;          // ends the worker's requests
    SignInAttempt attempt;
};

// The thread function of the worker. Sends at most two requests and reports one result to the mailbox. The mailbox
// drops the result if the attempt was abandoned in the meantime.
void runSignInWorker(const SignInWork& work);
