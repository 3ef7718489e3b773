// Tests that the identity provider is strict, because a lenient one would hide faults of the launcher's sign-in.

#include "sandbox/identity_provider.h"

#include <string>

#include <gtest/gtest.h>
#include <httplib.h>

#include "sandbox/browser.h"
#include "sandbox/http_message.h"
#include "support/trusted_authority.h"

namespace {

const std::string kConsentQuery =
    "client_id=sandbox-client&redirect_uri=http://127.0.0.1:1&response_type=code&scope=openid%20email%20profile&state=s"
    "&code_challenge=E9Melhoa2OwvFrEMTJguCHaoeK1t8URWbuGJSstw-cM&code_challenge_method=S256&access_type=offline";
const std::string kTokenForm = // tests append the code; challenge and verifier come from RFC 7636, appendix B
    "client_id=sandbox-client&client_secret=sandbox-secret&redirect_uri=http://127.0.0.1:1"
    "&code_verifier=dBjftJeZ4CVP-mB92K27uhbUJU1p1r_wW1gFWFOEjXk&grant_type=authorization_code&code=";
constexpr char kForm[] = "application/x-www-form-urlencoded";

class StrictProvider : public testing::Test {
  protected:
    // Presses "Allow" and returns the code, or "" after a refusal.
    std::string code(const std::string& query = kConsentQuery) {
        const std::string url = provider_.authorizationUrl() + "?" + query;
        const std::string redirect = signInWithBrowser(url, trust_.rootFile()).redirect;
        return parseHttpRequest("GET " + redirect + " HTTP/1.1\r\n\r\n").parameter("code");
    }

    TrustedAuthority trust_;
    IdentityProvider provider_{TrustedAuthority::authority(), {}};
    httplib::Client client_{"https://127.0.0.1:" + std::to_string(provider_.port())};
};

TEST_F(StrictProvider, RefusesWrongRequests) {
    client_.set_ca_cert_path(trust_.rootFile());
    const std::string used = code();
    client_.Post("/token", kTokenForm + used, kForm);
    EXPECT_EQ(provider_.events().back(), "token");
    client_.Post("/token", kTokenForm + used, kForm);
    EXPECT_EQ(provider_.events().back(), "refused: unknown code");
    client_.Post("/token", kTokenForm + code(), "text/plain");
    EXPECT_EQ(provider_.events().back(), "refused: not a form");
    const struct {
        bool exchanges;
        std::string part, replacement, why;
    } cases[] = {
        {false, "sandbox-client", "other", "unknown client_id"},
        {false, "127.0.0.1:1", "127.0.0.1.test:1", "redirect_uri is not a loopback address"},
        {false, "S256", "plain", "code_challenge_method is not S256"},
        {false, "state=s", "state=s&state=s", "state is missing"},
        {true, "dBjf", "XBjf", "code_verifier does not match"},
        {true, "127.0.0.1:1", "127.0.0.1:2", "redirect_uri differs"},
        {true, "sandbox-secret", "other", "wrong client credentials"},
        {true, "authorization_code", "refresh_token&refresh_token=unknown", "unknown refresh token"},
    };
    for (const auto& [exchanges, part, replacement, why] : cases) {
        std::string request = exchanges ? kTokenForm + code() : kConsentQuery;
        request.replace(request.find(part), part.size(), replacement);
        exchanges ? (void)client_.Post("/token", request, kForm) : (void)code(request);
        EXPECT_EQ(provider_.events().back(), "refused: " + why);
    }
    client_.Get("/v1/userinfo", {{"Authorization", "Bearer unknown"}});
    EXPECT_EQ(provider_.events().back(), "refused: unknown access token");
}

} // namespace
