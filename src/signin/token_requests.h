#pragma once

// What the launcher says to Google once the browser is done: code for tokens, stored refresh token for an access token,
// access token for the account's name and e-mail address. Blocking HTTPS; sign-in worker only. Nothing here is stored
// or logged.

#include <cstdint>
#include <memory>
#include <string>

#include "signin/sign_in_mailbox.h"

struct TokenResponse {
    bool ok = false;
    std::string accessToken;
    std::string refreshToken; // may be empty; always empty from refreshAccessToken
    std::string errorMessage; // when not `ok`
};

TokenResponse exchangeCodeForTokens(const std::string& clientId, const std::string& clientSecret,
                                    const std::string& code, const std::string& redirectUri,
                                    const std::string& codeVerifier);

TokenResponse refreshAccessToken(const std::string& clientId, const std::string& clientSecret,
                                 const std::string& refreshToken);

// One attempt, by value: a code of a browser sign-in, or a stored refresh token.
struct SignInWork {
    std::shared_ptr<SignInMailbox> mailbox;
    std::string clientId;
    std::string clientSecret;
    std::string code;
    std::string refreshToken;
    bool isRefresh = false;
    std::uint32_t generation = 0; // the mailbox's, when the worker was started
    std::string redirectUri;
    std::string codeVerifier;
};

// The worker's thread function: at most two requests, then one result in the mailbox, dropped when the attempt has been
// disowned in the meantime.
void runSignInWorker(const SignInWork& work);
