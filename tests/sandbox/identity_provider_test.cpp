// The provider is strict: a lenient one would hide faults of the launcher's sign-in.

#include "sandbox/identity_provider.h"

#include <map>
#include <string>
#include <utility>

#include <gtest/gtest.h>
#include <httplib.h>

#include "sandbox/browser.h"
#include "sandbox/http_message.h"
#include "support/trusted_authority.h"

namespace {

using Parameters = std::map<std::string, std::string>; // the values are percent-encoded

class StrictProvider : public testing::Test {
  protected:
    static std::string encoded(const Parameters& parameters) {
        std::string text;
        for (const auto& [name, value] : parameters)
            text += name + "=" + value + "&";
        return text;
    }
    // Presses "Allow" and returns the code, or "" after a refusal.
    std::string code(Parameters changes = {}) {
        changes.merge(Parameters{{"client_id", "sandbox-client"},
                                 {"redirect_uri", "http://127.0.0.1:1"}, // where nothing listens
                                 {"response_type", "code"},
                                 {"scope", "openid%20email%20profile"},
                                 {"state", "s"},
                                 {"code_challenge", "E9Melhoa2OwvFrEMTJguCHaoeK1t8URWbuGJSstw-cM"}, // RFC 7636, B
                                 {"code_challenge_method", "S256"},
                                 {"access_type", "offline"}});
        const std::string url = provider_.authorizationUrl() + "?" + encoded(changes);
        const std::string redirect = signInWithBrowser(url, trust_.rootFile()).redirect;
        return parseHttpRequest("GET " + redirect + " HTTP/1.1\r\n\r\n").parameter("code");
    }
    void exchange(Parameters changes, const std::string& type = "application/x-www-form-urlencoded") {
        if (!changes.contains("code")) changes["code"] = code();
        changes.merge(Parameters{{"client_id", "sandbox-client"},
                                 {"client_secret", "sandbox-secret"},
                                 {"code_verifier", "dBjftJeZ4CVP-mB92K27uhbUJU1p1r_wW1gFWFOEjXk"},
                                 {"grant_type", "authorization_code"},
                                 {"redirect_uri", "http://127.0.0.1:1"}});
        client_.Post("/token", encoded(changes), type);
    }

    TrustedAuthority trust_;
    IdentityProvider provider_{TrustedAuthority::authority(), {}};
    httplib::Client client_{"https://127.0.0.1:" + std::to_string(provider_.port())};
};

TEST_F(StrictProvider, RefusesWrongRequests) {
    client_.set_ca_cert_path(trust_.rootFile());
    const std::string used = code();
    exchange({{"code", used}});
    EXPECT_EQ(provider_.events().back(), "token");
    const struct {
        bool exchanges;
        Parameters changes;
        std::string why;
        std::string type = "application/x-www-form-urlencoded";
    } cases[] = {
        {false, {{"client_id", "other"}}, "unknown client_id"},
        {false, {{"redirect_uri", "http://127.0.0.1.test:1"}}, "redirect_uri is not a loopback address"},
        {false, {{"code_challenge_method", "plain"}}, "code_challenge_method is not S256"},
        {false, {{"state", "s&state=s"}}, "state is missing"},
        {true, {{"code", used}}, "unknown code"},
        {true, {{"code_verifier", std::string(43, 'v')}}, "code_verifier does not match"},
        {true, {{"redirect_uri", "http://127.0.0.1:2"}}, "redirect_uri differs"},
        {true, {{"client_secret", "other"}}, "wrong client credentials"},
        {true, {{"grant_type", "refresh_token"}, {"refresh_token", "unknown"}}, "unknown refresh token"},
        {true, {}, "not a form", "text/plain"},
    };
    for (const auto& [exchanges, changes, why, type] : cases) {
        exchanges ? exchange(changes, type) : (void)code(changes);
        EXPECT_EQ(provider_.events().back(), "refused: " + why);
    }
    client_.Get("/v1/userinfo", {{"Authorization", "Bearer unknown"}});
    EXPECT_EQ(provider_.events().back(), "refused: unknown access token");
}

} // namespace
