// Tests the exact requests to Google, and the outcome of every answer.

#include "signin/token_requests.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/scoped_environment.h"
#include "support/tls_server.h"
#include "support/trusted_authority.h"

namespace {

const std::string kTokens = R"({"access_token":"access","refresh_token":"fresh","expires_in":3599})";
const std::string kUser = R"({"name":"Ada","email":"ada@test"})";
const std::string kWithoutLength = "HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n";
constexpr char kNoToken[] = "Could not reach Google's token endpoint. Check your connection.";
constexpr char kBadToken[] = "Google returned an unexpected token response.";
constexpr char kRejected[] = "Google rejected the sign-in (token endpoint returned HTTP ";

class TokenRequests : public testing::Test {
  protected:
    // Runs the worker against one server that has both endpoints and sends these answers. If an answer is empty, the
    // server closes the connection instead.
    SignInResult run(bool isRefresh, const std::string& tokenAnswer, const std::string& userAnswer) {
        const TlsServer google(TrustedAuthority::loopback(), [&](TlsConnection& connection) {
            const std::string request = connection.readRequest();
            const std::string& answer = request.starts_with("POST /token ") ? tokenAnswer : userAnswer;
            answer.empty() ? connection.closeAbruptly() : (void)connection.write(answer);
        });
        const ScopedEnvironment port("VOLO_SANDBOX_IDENTITY_PORT", std::to_string(google.port()));
        SignInWork work;
        work.mailbox = std::make_shared<SignInMailbox>();
        work.attempt = {work.mailbox->startAttempt(), "", "verifier", "http://127.0.0.1:4711", ""};
        work.clientId = "an id";
        work.clientSecret = "a&secret";
        work.code = "a/code";
        work.refreshToken = "old";
        work.isRefresh = isRefresh;
        runSignInWorker(work);
        requests_ = google.requests();
        return work.mailbox->take().result;
    }

    TrustedAuthority trust_;
    std::vector<std::string> requests_;
};

TEST_F(TokenRequests, EveryAnswerHasItsOutcome) {
    const std::string tokens = httpAnswer(200, kTokens), user = httpAnswer(200, kUser);
    const struct {
        std::string tokenAnswer, userAnswer;
        std::string message; // for the user; empty: success
    } rows[] = {
        {tokens, user, ""},
        {"", user, kNoToken},
        {"HTTP/1.1 200 OK\r\nContent-Length: 999\r\n\r\n" + kTokens, user, kNoToken},
        {kWithoutLength + R"({"access_token":"a")", user, kBadToken},
        {httpAnswer(200, std::string(200000, '[')), user, kBadToken},
        {httpAnswer(400, kTokens), user, std::string(kRejected) + "400)."},
        {httpAnswer(201, kTokens), user, std::string(kRejected) + "201)."},
        {"HTTP/1.1 302 Found\r\nLocation: /v1/userinfo\r\nContent-Length: 0\r\n\r\n", user,
         std::string(kRejected) + "302)."},
        {httpAnswer(200, R"({"access_token":["a"]})"), user, "Google did not return an access token."},
        {tokens, "", "Could not reach Google's userinfo endpoint."},
        {tokens, httpAnswer(401, kUser), "Google refused the userinfo request (HTTP 401)."},
        {tokens, httpAnswer(200, "[]"), "Google returned an unexpected userinfo response."},
        {tokens, httpAnswer(200, R"({"name":"Ada","email":7})"), "Google did not return an account email."},
    };
    for (const auto& [tokenAnswer, userAnswer, message] : rows) {
        for (const bool isRefresh : {false, true}) {
            SCOPED_TRACE(message + (isRefresh ? ", restoring" : ", signing in"));
            const bool invalid = isRefresh && message.starts_with(kRejected);
            const SignInResult result = run(isRefresh, tokenAnswer, userAnswer);
            EXPECT_EQ(result.errorMessage, invalid ? "The stored session is no longer valid." : message);
            EXPECT_TRUE(result.hasResult && result.fromRestore == isRefresh && result.success == message.empty());
            if (!result.success) continue;
            EXPECT_EQ(result.refreshToken, isRefresh ? "" : "fresh") << "a restore keeps the stored token";
            EXPECT_EQ(result.userName + " " + result.userEmail, "Ada ada@test");
        }
    }
}

TEST_F(TokenRequests, RequestsAreExact) {
    const auto bodyOf = [](const std::string& request) { return request.substr(request.find("\r\n\r\n") + 4); };
    ASSERT_TRUE(run(false, httpAnswer(200, kTokens), httpAnswer(200, kUser)).success);
    ASSERT_EQ(requests_.size(), 2u);
    EXPECT_TRUE(requests_[0].starts_with("POST /token HTTP/1.1\r\n")) << requests_[0];
    EXPECT_TRUE(requests_[1].starts_with("GET /v1/userinfo HTTP/1.1\r\n")) << requests_[1];
    EXPECT_NE(requests_[0].find("\r\nContent-Type: application/x-www-form-urlencoded\r\n"), std::string::npos);
    EXPECT_NE(requests_[1].find("\r\nAuthorization: Bearer access\r\n"), std::string::npos);
    for (const std::string& request : requests_) {
        for (const char* line : {"\r\nUser-Agent: cpp-httplib/", "\r\nConnection: close\r\n"})
            EXPECT_NE(request.find(line), std::string::npos) << line << " in " << request;
        EXPECT_EQ(request.find("gzip"), std::string::npos) << request;
    }
    EXPECT_EQ(bodyOf(requests_[0]), "client_id=an%20id&client_secret=a%26secret&code=a%2Fcode&code_verifier=verifier"
                                    "&grant_type=authorization_code&redirect_uri=http%3A%2F%2F127.0.0.1%3A4711");
    ASSERT_TRUE(run(true, httpAnswer(200, kTokens), httpAnswer(200, kUser)).success);
    EXPECT_EQ(bodyOf(requests_[0]),
              "client_id=an%20id&client_secret=a%26secret&grant_type=refresh_token&refresh_token=old");
}

} // namespace
