#pragma once

// A strict OAuth 2.0 and OpenID Connect provider on loopback, over TLS, with the same interface as Google's:
//   GET  /o/oauth2/v2/auth   consent page with a button
//   GET  /consent?...        the button's request; answered with the redirect
//   POST /token              exchanges a code or a refresh token for tokens
//   GET  /v1/userinfo        name and e-mail address for a bearer token
// It checks client credentials, PKCE S256, the exact redirect URI of the code, single-use codes that expire after a
// minute, refresh tokens and bearer tokens. Faults can be changed while it runs. Any thread.

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
    int tokenStatus = 0;            // instead of 200; 0: no fault
    std::string tokenBody = {};     // instead of the JSON; empty: no fault
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

    [[nodiscard]] int port() const;                     // 0 when the port was not free
    [[nodiscard]] std::string authorizationUrl() const; // https://127.0.0.1:<port>/o/oauth2/v2/auth

    void setFaults(const IdentityProviderFaults& faults);

    // One line per event, in order: "consent", "code", "token", "refresh", "userinfo", "refused: <why>".
    [[nodiscard]] std::vector<std::string> events() const;

    // Makes a valid refresh token, as after an earlier sign-in.
    [[nodiscard]] std::string issueRefreshToken();
    // Makes a token valid that an earlier provider has issued.
    void acceptRefreshToken(const std::string& token);
    void revokeRefreshTokens();

    // Every client secret, code, verifier and token of the run, for tests that search for leaks.
    [[nodiscard]] std::vector<std::string> secrets() const;

  private:
    struct Service;
    std::unique_ptr<Service> service_;
};
