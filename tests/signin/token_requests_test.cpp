// What is said to Google byte for byte, every way in which Google may answer, and where the secrets go.

#include <functional>

#include "sign_in_fixture.h"
#include "support/tls_server.h"

namespace {

constexpr char kTokens[] = R"({"access_token":"canary-access","refresh_token":"canary-refresh","expires_in":3599})";
constexpr char kUser[] = R"({"name":"Ada","email":"ada@test"})";
constexpr char kNoToken[] = "Could not reach Google's token endpoint. Check your connection.";
constexpr char kBadToken[] = "Google returned an unexpected token response.";
constexpr char kNoAccess[] = "Google did not return an access token.";
constexpr char kNoUser[] = "Could not reach Google's userinfo endpoint.";
constexpr char kBadUser[] = "Google returned an unexpected userinfo response.";
constexpr char kNoEmail[] = "Google did not return an account email.";
constexpr char kInvalid[] = "The stored session is no longer valid.";

using Answer = std::function<void(TlsConnection&)>;

Answer answers(int status, const std::string& body) {
    return [status, body](TlsConnection& connection) { connection.write(httpAnswer(status, body)); };
}
Answer writes(const std::string& bytes) {
    return [bytes](TlsConnection& connection) { connection.write(bytes); };
}
void hangsUp(TlsConnection& connection) {
    connection.closeAbruptly();
}
void resets(TlsConnection& connection) {
    connection.reset();
}

// One server that is both endpoints.
TlsServer::Script endpoints(const Answer& token, const Answer& userInfo) {
    return [token, userInfo](TlsConnection& connection) {
        const bool isToken = connection.readRequest().starts_with("POST /token ");
        isToken ? token(connection) : userInfo(connection);
    };
}

struct Row {
    const char* name;
    Answer token;
    Answer userInfo;
    std::string onSignIn; // the text for the user; empty for success
    std::string onRestore;
};

std::string rejected(int status) {
    return "Google rejected the sign-in (token endpoint returned HTTP " + std::to_string(status) + ").";
}
std::string refused(int status) {
    return "Google refused the userinfo request (HTTP " + std::to_string(status) + ").";
}

const std::vector<Row>& rows() {
    static const Answer tokens = answers(200, kTokens);
    static const Answer user = answers(200, kUser);
    static const std::string redirect = "HTTP/1.1 302 Found\r\nLocation: /elsewhere\r\nContent-Length: 0\r\n\r\n";
    static const std::string lengthless = "HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n";
    static const std::string deep(200000, '[');
    static const std::vector<Row> all = {
        {"all well", tokens, user, "", ""},
        {"no token answer", hangsUp, user, kNoToken, kNoToken},
        {"token connection reset", resets, user, kNoToken, kNoToken},
        {"not HTTP", writes("220 mail.test ESMTP\r\n\r\n"), user, kNoToken, kNoToken},
        {"token body cut", writes("HTTP/1.1 200 OK\r\nContent-Length: 999\r\n\r\n" + std::string(kTokens)), user,
         kNoToken, kNoToken},
        {"token body cut, no length", writes(lengthless + R"({"access_token":"canary-access")"), user, kBadToken,
         kBadToken},
        {"token refused", answers(400, R"({"error":"invalid_grant"})"), user, rejected(400), kInvalid},
        {"created is not OK", answers(201, kTokens), user, rejected(201), kInvalid},
        {"token redirect is not followed", writes(redirect), user, rejected(302), kInvalid},
        {"token no JSON", answers(200, "<html>"), user, kBadToken, kBadToken},
        {"token empty body", answers(200, ""), user, kBadToken, kBadToken},
        {"token and garbage", answers(200, std::string(kTokens) + "x"), user, kBadToken, kBadToken},
        {"token nested deep", answers(200, R"({"access_token":)" + deep), user, kBadToken, kBadToken},
        {"no access token", answers(200, R"({"refresh_token":"r"})"), user, kNoAccess, kNoAccess},
        {"access token of another type", answers(200, R"({"access_token":["a"]})"), user, kNoAccess, kNoAccess},
        {"no userinfo answer", tokens, hangsUp, kNoUser, kNoUser},
        {"userinfo body cut", tokens, writes("HTTP/1.1 200 OK\r\nContent-Length: 99\r\n\r\n{"), kNoUser, kNoUser},
        {"userinfo refused", tokens, answers(401, kUser), refused(401), refused(401)},
        {"userinfo array", tokens, answers(200, "[]"), kBadUser, kBadUser},
        {"userinfo cut, no length", tokens, writes(lengthless + R"({"email":"ada@test)"), kBadUser, kBadUser},
        {"no email", tokens, answers(200, R"({"name":"Ada"})"), kNoEmail, kNoEmail},
        {"email of another type", tokens, answers(200, R"({"name":"Ada","email":7})"), kNoEmail, kNoEmail},
    };
    return all;
}

class TokenRequests : public SignInTest {};

TEST_F(TokenRequests, EveryAnswerHasItsOutcome) {
    for (const Row& row : rows()) {
        for (const bool restore : {false, true}) {
            SCOPED_TRACE(std::string(row.name) + (restore ? ", restoring" : ", signing in"));
            const std::string& expected = restore ? row.onRestore : row.onSignIn;
            const TlsServer google(TrustedAuthority::loopback(), endpoints(row.token, row.userInfo));
            useProvider(google.port());
            storeSession("old");
            if (restore) {
                flow_->restoreSession();
                pollUntilSettled();
            } else {
                signInWithCode("abc");
            }
            EXPECT_EQ(flow_->errorMessage, expected);
            EXPECT_EQ(flow_->failedOnRestore, restore && !expected.empty());
            EXPECT_EQ(flow_->state, expected.empty() ? SignInState::SignedIn : SignInState::SignedOut);
            const std::string stored = storedSession();
            if (!expected.empty()) {
                EXPECT_EQ(stored, "old|Old Name|old@test") << "a failure stores nothing and takes nothing away";
            } else {
                EXPECT_EQ(stored, (restore ? "old" : "canary-refresh") + std::string("|Ada|ada@test"));
            }
        }
    }
}

TEST_F(TokenRequests, AServerThatIsNotGoogleIsNoAnswer) {
    const TlsServer impostor(TrustedAuthority::authority().issue({{"other.test"}, {}, "127.0.0.1"}),
                             endpoints(answers(200, kTokens), answers(200, kUser)));
    useProvider(impostor.port());
    signInWithCode("abc");
    EXPECT_EQ(flow_->errorMessage, kNoToken);
    // The library looks at the certificate once the handshake is over: the connection then ends without a byte.
    for (const std::string& sent : impostor.requests())
        EXPECT_EQ(sent, "") << "it must not even learn the code";
}

TEST_F(TokenRequests, RequestsAreExactAndSecretsGoNowhereElse) {
    const TlsServer google(TrustedAuthority::loopback(), endpoints(answers(200, kTokens), answers(200, kUser)));
    useProvider(google.port());
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    flow_ = std::make_unique<SignInFlow>("canary id", "canary&secret", settings_.get());
    flow_->startSignIn();
    const std::string url = openedUrl();
    const int port = listenerPort(url);
    const bool redirected = redirect(port, "?code=canary%2Fcode&state=" + queryValue(url, "state"));
    pollUntilSettled();
    newFlow();
    flow_->restoreSession();
    pollUntilSettled();
    const std::string printed = testing::internal::GetCapturedStdout() + testing::internal::GetCapturedStderr();

    ASSERT_TRUE(redirected);
    ASSERT_EQ(flow_->state, SignInState::SignedIn);
    const std::vector<std::string> requests = google.requests();
    ASSERT_EQ(requests.size(), 4u);
    const auto bodyOf = [](const std::string& request) { return request.substr(request.find("\r\n\r\n") + 4); };
    const std::string exchange = bodyOf(requests[0]);
    const std::string verifier = queryValue(exchange, "code_verifier");
    EXPECT_EQ(verifier.size(), 64u);
    EXPECT_EQ(exchange,
              "client_id=canary%20id&client_secret=canary%26secret&code=canary%2Fcode&code_verifier=" + verifier +
                  "&grant_type=authorization_code&redirect_uri=http%3A%2F%2F127.0.0.1%3A" + std::to_string(port));
    EXPECT_TRUE(requests[0].starts_with("POST /token HTTP/1.1\r\n"));
    EXPECT_NE(requests[0].find("\r\nContent-Type: application/x-www-form-urlencoded\r\n"), std::string::npos);
    EXPECT_TRUE(requests[1].starts_with("GET /v1/userinfo HTTP/1.1\r\n"));
    EXPECT_NE(requests[1].find("\r\nAuthorization: Bearer canary-access\r\n"), std::string::npos);
    EXPECT_EQ(bodyOf(requests[2]), "client_id=sandbox-client&client_secret=sandbox-secret&grant_type=refresh_token"
                                   "&refresh_token=canary-refresh");

    for (const std::string& request : requests) {
        EXPECT_NE(request.find("\r\nUser-Agent: cpp-httplib/"), std::string::npos) << request;
        EXPECT_NE(request.find("\r\nConnection: close\r\n"), std::string::npos) << request;
        EXPECT_EQ(request.find("gzip"), std::string::npos) << request;
    }

    std::string onDisk;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder_ / "appdata")) {
        if (!entry.is_regular_file()) continue;
        EXPECT_EQ(entry.path().filename(), "Launcher.conf");
        onDisk += readFileBytes(entry.path());
    }
    EXPECT_NE(onDisk.find("canary-refresh"), std::string::npos);
    for (const std::string& secret : {verifier, std::string("canary-access"), std::string("code"),
                                      std::string("secret"), queryValue(url, "state")}) {
        EXPECT_EQ(onDisk.find(secret), std::string::npos) << secret;
    }
    EXPECT_EQ(printed, "") << "the sign-in has nothing to print";
}

} // namespace
