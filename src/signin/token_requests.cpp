#include "signin/token_requests.h"

#include <utility>

#include "signin/google_endpoints.h"
#include "system/http.h"
#include "system/json.h"

namespace {

constexpr int kHttpOk = 200;

HttpsAnswer postToTokenEndpoint(const HttpFields& fields, const HttpAbort& abort) {
    const GoogleEndpoints google = googleEndpoints();
    return httpsPostForm({google.tokenHost, google.tokenPort, 0, abort}, "/token", fields);
}

TokenResponse failedResponse(const std::string& message) {
    TokenResponse response;
    response.errorMessage = message;
    return response;
}

// Reads the response to a code exchange or a refresh. `refusal` is the error message for a status other than 200.
TokenResponse readTokenAnswer(const HttpsAnswer& answer, const std::string& refusal) {
    if (!answer.answered) return failedResponse("Could not reach Google's token endpoint. Check your connection.");
    if (answer.status != kHttpOk) return failedResponse(refusal);
    rapidjson::Document document;
    if (!parseJsonObject(answer.body, document)) {
        return failedResponse("Google returned an unexpected token response.");
    }
    TokenResponse response;
    response.accessToken = jsonStringMember(document, "access_token");
    if (response.accessToken.empty()) return failedResponse("Google did not return an access token.");
    response.refreshToken = jsonStringMember(document, "refresh_token");
    response.ok = true;
    return response;
}

// Requests the account's name and e-mail address and stores them in `result`. Returns an error message for the user, or
// an empty text on success.
std::string requestUserInfo(const std::string& accessToken, const HttpAbort& abort, SignInResult& result) {
    const GoogleEndpoints google = googleEndpoints();
    const HttpsAnswer answer = httpsGet({google.userInfoHost, google.userInfoPort, 0, abort}, "/v1/userinfo",
                                        {{"Authorization", "Bearer " + accessToken}});
    if (!answer.answered) return "Could not reach Google's userinfo endpoint.";
    if (answer.status != kHttpOk) {
        return "Google refused the userinfo request (HTTP " + std::to_string(answer.status) + ").";
    }
    rapidjson::Document document;
    if (!parseJsonObject(answer.body, document)) return "Google returned an unexpected userinfo response.";
    result.userName = jsonStringMember(document, "name");
    result.userEmail = jsonStringMember(document, "email");
    return result.userEmail.empty() ? "Google did not return an account email." : "";
}

} // namespace

TokenResponse exchangeCodeForTokens(const std::string& clientId, const std::string& clientSecret,
                                    const std::string& code, const std::string& redirectUri,
                                    const std::string& codeVerifier, const HttpAbort& abort) {
    const HttpsAnswer answer = postToTokenEndpoint({{"client_id", clientId},
                                                    {"client_secret", clientSecret},
                                                    {"code", code},
                                                    {"code_verifier", codeVerifier},
                                                    {"grant_type", "authorization_code"},
                                                    {"redirect_uri", redirectUri}},
                                                   abort);
    return readTokenAnswer(answer, "Google rejected the sign-in (token endpoint returned HTTP " +
                                       std::to_string(answer.status) + ").");
}

TokenResponse refreshAccessToken(const std::string& clientId, const std::string& clientSecret,
                                 const std::string& refreshToken, const HttpAbort& abort) {
    const HttpsAnswer answer = postToTokenEndpoint({{"client_id", clientId},
                                                    {"client_secret", clientSecret},
                                                    {"grant_type", "refresh_token"},
                                                    {"refresh_token", refreshToken}},
                                                   abort);
    TokenResponse response = readTokenAnswer(answer, "The stored session is no longer valid.");
    response.refreshToken.clear(); // keep the stored token even if Google sends a new one
    return response;
}

void runSignInWorker(const SignInWork& work) {
    const TokenResponse tokens =
        work.isRefresh ? refreshAccessToken(work.clientId, work.clientSecret, work.refreshToken, work.abort)
                       : exchangeCodeForTokens(work.clientId, work.clientSecret, work.code, work.attempt.redirectUri,
                                               work.attempt.codeVerifier, work.abort);
    SignInResult result;
    result.hasResult = true;
    result.fromRestore = work.isRefresh;
    result.refreshToken = tokens.refreshToken;
    result.errorMessage = tokens.ok ? requestUserInfo(tokens.accessToken, work.abort, result) : tokens.errorMessage;
    result.success = result.errorMessage.empty();

    work.mailbox->reportResult(work.attempt.generation, std::move(result));
}
