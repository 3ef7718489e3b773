#pragma once

// One attempt to sign in. The main thread owns the record; listener and worker get copies. The record is never written
// to disk.

#include <cstdint>
#include <string>

struct SignInAttempt {
    std::uint32_t generation = 0; // the attempt's number, which each report to the mailbox carries
    std::string oauthState;       // the redirect must contain it
    std::string codeVerifier;     // PKCE verifier; only the token request contains it
    std::string redirectUri;      // as sent in the authorization URL
    std::string authorizationUrl; // the page that the browser opens
};
