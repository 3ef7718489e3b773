#pragma once

// One attempt to sign in. The frame thread owns the record; listener and worker get copies of what they need. Nothing
// of it is ever written to disk.

#include <cstdint>
#include <string>

struct SignInAttempt {
    std::uint32_t generation = 0; // the number under which listener and worker report to the mailbox
    std::string oauthState;       // the redirect must bring it back
    std::string codeVerifier;     // PKCE verifier; only the token request reveals it
    std::string redirectUri;      // as sent in the authorization URL
    std::string authorizationUrl; // the page that the browser opens
};
