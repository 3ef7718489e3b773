#pragma once

// The requests to Google after the browser has returned: authorization code for tokens, stored refresh token for an
// access token, access token for the account's name and e-mail address. Blocking HTTPS; sign-in worker only. Nothing
// here is stored or logged.

#include <memory>
#include <string>

#include "signin/sign_in_attempt.h"
#include "signin/sign_in_mailbox.h"
#include "system/http.h"

struct TokenResponse {
    bool ok = false;
    std::string accessToken;
    std::string refreshToken; // may be empty; always empty from refreshAccessToken
    std::string errorMessage; // when not `ok`
};

[[nodiscard]] TokenResponse exchangeCodeForTokens(const std::string& clientId, const std::string& clientSecret,
                                                  const std::string& code, const std::string& redirectUri,
                                                  const std::string& codeVerifier, const HttpAbort& abort = {});

[[nodiscard]] TokenResponse refreshAccessToken(const std::string& clientId, const std::string& clientSecret,
                                               const std::string& refreshToken, const HttpAbort& abort = {});

// The worker's own copy of what it needs.
struct SignInWork {
    std::shared_ptr<SignInMailbox> mailbox;
    std::string clientId;
    std::string clientSecret;
    std::string code;         // empty when restoring
    std::string refreshToken; // empty for a browser sign-in
    bool isRefresh = false;   // restore the stored session
    HttpAbort abort;          // ends the worker's requests
    SignInAttempt attempt;
};

// The worker's thread function: at most two requests, then one result for the mailbox, which drops it when the attempt
// was abandoned in the meantime.
void runSignInWorker(const SignInWork& work);
