#pragma once

// A strict stand-in for Google's OAuth 2.0 and OpenID Connect services on loopback, over TLS:
//   GET  /o/oauth2/v2/auth   consent page with a button
//   GET  /consent?...        what the button asks for: the redirect
//   POST /token              code or refresh token for tokens
//   GET  /v1/userinfo        name and e-mail for a bearer token
// It checks what a strict provider checks: client credentials, PKCE S256, the exact redirect URI of the code,
// single-use codes that expire after a minute, refresh tokens it issued, bearer tokens. Faults are switched on while it
// runs.

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "sandbox/certificate_authority.h"

struct IdentityProviderAccount {
    std::string clientId = "sandbox-client";
    std::string clientSecret = "sandbox-secret";
    std::string userName = "Ada Sandbox";
    std::string userEmail = "ada@sandbox.test";
};

struct IdentityProviderFaults {
    bool denyConsent = false;       // the redirect carries error=access_denied
    int tokenDelayMilliseconds = 0; // before the token endpoint answers
    int tokenStatus = 0;            // answered instead of 200; 0: none
    std::string tokenBody = {};     // answered instead of the JSON; empty: none
    bool withoutAccessToken = false;
    bool withoutRefreshToken = false;
    bool rotateRefreshToken = false; // a refresh answers with a new refresh token too
    int userInfoStatus = 0;
    std::string userInfoBody = {};
    bool withoutEmail = false;
    bool withoutName = false;
};

class IdentityProvider {
  public:
    // Listens on 127.0.0.1 with a certificate for "localhost", 127.0.0.1 and what else it shall answer for; port 0 lets
    // the system choose. A port that cannot be had leaves port() below 1.
    IdentityProvider(const CertificateAuthority& authority, const IdentityProviderAccount& account, int port = 0,
                     const std::vector<std::string>& moreNames = {});
    ~IdentityProvider();
    IdentityProvider(const IdentityProvider&) = delete;
    IdentityProvider& operator=(const IdentityProvider&) = delete;

    int port() const;
    std::string authorizationUrl() const; // https://127.0.0.1:<port>/o/oauth2/v2/auth

    void setFaults(const IdentityProviderFaults& faults);

    // One line per thing that happened, in order: "consent", "code", "token", "refresh", "userinfo", "refused: <why>".
    std::vector<std::string> events() const;

    // Makes a refresh token as if this user had signed in before; or takes one that a provider before it has issued.
    std::string issueRefreshToken();
    void acceptRefreshToken(const std::string& token);
    void revokeRefreshTokens();

    // Every client secret, code, verifier and token that has come along: what must not turn up anywhere else.
    std::vector<std::string> secrets() const;

  private:
    struct Service;
    std::unique_ptr<Service> service_;
};
