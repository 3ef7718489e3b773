#pragma once

// A strict OAuth 2.0 and OpenID Connect provider on loopback, over TLS, with the same interface as Google's:
//   GET  /o/oauth2/v2/auth   consent page with the buttons "Allow" and "Deny"
//   GET  /consent?...        request of a button; the response is the redirect to the launcher
//   POST /token              exchanges a code or a refresh token for tokens
//   GET  /v1/userinfo        name and e-mail address for a bearer token
// The provider checks client credentials, PKCE S256, the exact redirect URI of the code, refresh tokens and bearer
// tokens. A code can be used once and expires after a minute. Faults can be changed while the provider runs. Any
// thread.

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
    bool denyConsent = false;       // the redirect contains error=access_denied
    int tokenDelayMilliseconds = 0; // before each response of the token endpoint
    int tokenStatus = 0;            // status instead of 200; 0: no fault
    std::string tokenBody = {};     // body instead of the JSON; empty: no fault
    bool withoutAccessToken = false;
    bool withoutRefreshToken = false;
    bool rotateRefreshToken = false; // a refresh also returns a new refresh token
    int userInfoStatus = 0;
    std::string userInfoBody = {};
    bool withoutEmail = false;
    bool withoutName = false;
};

class IdentityProvider {
  public:
    // Listens on 127.0.0.1 with a certificate for "localhost", 127.0.0.1 and `moreNames`. Port 0 lets the system
    // choose.
    IdentityProvider(const CertificateAuthority& authority, const IdentityProviderAccount& account, int port = 0,
                     const std::vector<std::string>& moreNames = {});
    ~IdentityProvider();
    IdentityProvider(const IdentityProvider&) = delete;
    IdentityProvider& operator=(const IdentityProvider&) = delete;

    [[nodiscard]] int port() const;                     // 0 if the port was not free
    [[nodiscard]] std::string authorizationUrl() const; // https://127.0.0.1:<port>/o/oauth2/v2/auth

    void setFaults(const IdentityProviderFaults& faults);

    // One line per event, in order: "consent", "code", "token", "refresh", "userinfo", "refused: <why>".
    [[nodiscard]] std::vector<std::string> events() const;

    // Creates and returns a valid refresh token, as after an earlier sign-in.
    [[nodiscard]] std::string issueRefreshToken();

    // Makes a refresh token valid that the provider of an earlier run has issued.
    void acceptRefreshToken(const std::string& token);
    void revokeRefreshTokens();

    // Returns all client secrets, codes, verifiers and tokens of this run, for tests that search for leaks.
    [[nodiscard]] std::vector<std::string> secrets() const;

  private:
    struct Service;
    std::unique_ptr<Service> service_;
};
