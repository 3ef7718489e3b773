#include "sandbox/identity_provider.h"

#include <chrono>
#include <cstddef>
#include <map>
#include <mutex>
#include <set>
#include <utility>

#include <httplib.h>
#include <openssl/evp.h>
#include <openssl/rand.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include "sandbox/http_message.h"
#include "sandbox/tls_server.h"

namespace {

using Clock = std::chrono::steady_clock;
using JsonWriter = rapidjson::Writer<rapidjson::StringBuffer>;

constexpr char kHtml[] = "text/html";
constexpr auto kCodeLifetime = std::chrono::seconds(60);

std::string randomHex(std::size_t byteCount) {
    std::vector<unsigned char> bytes(byteCount);
    if (RAND_bytes(bytes.data(), static_cast<int>(byteCount)) != 1) return {};
    std::string text;
    for (const unsigned char byte : bytes)
        text += {"0123456789abcdef"[byte >> 4], "0123456789abcdef"[byte & 15]};
    return text;
}

// Returns the PKCE challenge for a verifier. Uses OpenSSL's Base64, because this check must not share code with the
// launcher.
std::string s256Challenge(const std::string& verifier) {
    unsigned char digest[32];
    unsigned char encoded[48];
    EVP_Digest(verifier.data(), verifier.size(), digest, nullptr, EVP_sha256(), nullptr);
    EVP_EncodeBlock(encoded, digest, sizeof digest);
    std::string text(reinterpret_cast<const char*>(encoded), 43); // the 44th character is padding
    for (char& character : text) {
        if (character == '+') character = '-';
        if (character == '/') character = '_';
    }
    return text;
}

std::string jsonObject(const std::vector<std::pair<const char*, std::string>>& members) {
    rapidjson::StringBuffer buffer;
    JsonWriter writer(buffer);
    writer.StartObject();
    for (const auto& [key, value] : members) {
        writer.Key(key);
        writer.String(value);
    }
    writer.EndObject();
    return buffer.GetString();
}

std::string htmlEscape(const std::string& text) {
    std::string escaped;
    for (const char character : text) {
        if (character == '&')
            escaped += "&amp;";
        else if (character == '<')
            escaped += "&lt;";
        else if (character == '"')
            escaped += "&quot;";
        else
            escaped += character;
    }
    return escaped;
}

std::string page(const std::string& title, const std::string& content) {
    return "<!DOCTYPE html><html><head><meta charset=\"utf-8\"><title>" + title +
           "</title><style>body{font-family:sans-serif;background:#f3f4f7;color:#1c2230;display:flex;height:100vh;"
           "margin:0;align-items:center;justify-content:center}main{background:#fff;padding:40px "
           "48px;border-radius:12px;"
           "box-shadow:0 2px 16px #0002;max-width:420px}button{font-size:16px;padding:10px 28px;border-radius:6px;"
           "border:1px solid "
           "#c5cad6;background:#fff;margin-right:12px}button[value=allow]{background:#0d6efd;color:#fff}"
           "</style></head><body><main><h2>" +
           title + "</h2>" + content + "</main></body></html>";
}

bool isLoopbackRedirect(const std::string& uri) {
    static const std::string prefix = "http://127.0.0.1:";
    if (!uri.starts_with(prefix)) return false;
    const std::string port = uri.substr(prefix.size());
    return !port.empty() && port.size() <= 5 && port.find_first_not_of("0123456789") == std::string::npos;
}

bool hasScope(const std::string& scopes, const std::string& scope) {
    return (" " + scopes + " ").find(" " + scope + " ") != std::string::npos;
}

// An authorization request. It is in `requests` until the user presses a button of the consent page. If the user allows
// the sign-in, it is then in `codes` until the code is redeemed.
struct Grant {
    std::string redirectUri;
    std::string state;
    std::string challenge;
    Clock::time_point codeIssued;
};

} // namespace

struct IdentityProvider::Service {
    Service(const ServerIdentity& identity, const IdentityProviderAccount& user, int port);

    const IdentityProviderAccount account;

    std::mutex mutex; // guards everything below except the server
    IdentityProviderFaults faults;
    std::vector<std::string> events;
    std::map<std::string, Grant> requests; // the user has not pressed a button yet
    std::map<std::string, Grant> codes;
    std::set<std::string> refreshTokens;
    std::set<std::string> accessTokens;
    std::set<std::string> seenSecrets; // codes and verifiers, each valid only once

    TlsServer server; // the last member, so that its threads end before the other members are destroyed

    std::string answer(TlsConnection& connection, const HttpRequest& request);

    // These return whole HTTP responses. The caller holds the mutex.
    std::string showConsent(const HttpRequest& request);
    std::string answerConsent(const HttpRequest& request);
    std::string answerToken(const HttpRequest& request);
    std::string answerUserInfo(const HttpRequest& request);

    [[nodiscard]] std::string refusalOf(const HttpRequest& authorization) const;
    std::string redeemCode(const HttpRequest& request);
    std::string refusePage(const std::string& why);
    std::string refuse(int status, const char* error, const std::string& why);
    std::string faultAnswer(int status, const std::string& body, const char* name);
};

IdentityProvider::Service::Service(const ServerIdentity& identity, const IdentityProviderAccount& user, int port)
    : account(user)
    , server(
          identity,
          [this](TlsConnection& connection) {
              const HttpRequest request = parseHttpRequest(connection.readRequest());
              if (!request.method.empty()) connection.write(answer(connection, request));
          },
          port) {}

std::string IdentityProvider::Service::answer(TlsConnection& connection, const HttpRequest& request) {
    const std::string endpoint = request.method + " " + request.path;
    std::unique_lock<std::mutex> lock(mutex);
    if (endpoint == "GET /o/oauth2/v2/auth") return showConsent(request);
    if (endpoint == "GET /consent") return answerConsent(request);
    if (endpoint == "GET /v1/userinfo") return answerUserInfo(request);
    if (endpoint != "POST /token") return httpAnswer(404, "");
    const int delay = faults.tokenDelayMilliseconds;
    lock.unlock();
    connection.pause(delay);
    lock.lock();
    return answerToken(request);
}

// --- the browser's side ----------------------------------------------------------------------------------------------

std::string IdentityProvider::Service::refusalOf(const HttpRequest& authorization) const {
    if (authorization.parameter("client_id") != account.clientId) return "unknown client_id";
    if (!isLoopbackRedirect(authorization.parameter("redirect_uri"))) return "redirect_uri is not a loopback address";
    if (authorization.parameter("response_type") != "code") return "response_type is not code";
    for (const char* scope : {"openid", "email", "profile"}) {
        if (!hasScope(authorization.parameter("scope"), scope)) return std::string("scope lacks ") + scope;
    }
    if (authorization.parameter("code_challenge_method") != "S256") return "code_challenge_method is not S256";
    if (authorization.parameter("code_challenge").size() != 43) return "code_challenge is not 43 characters long";
    if (authorization.parameter("state").empty()) return "state is missing";
    if (authorization.parameter("access_type") != "offline") return "access_type is not offline";
    return {};
}

std::string IdentityProvider::Service::refusePage(const std::string& why) {
    events.push_back("refused: " + why);
    return httpAnswer(400, page("Error 400", "<p>The request is invalid: " + htmlEscape(why) + ".</p>"), kHtml);
}

std::string IdentityProvider::Service::showConsent(const HttpRequest& request) {
    const std::string why = refusalOf(request);
    if (!why.empty()) return refusePage(why);
    const std::string id = randomHex(16);
    requests[id] = {
        request.parameter("redirect_uri"), request.parameter("state"), request.parameter("code_challenge"), {}};
    events.emplace_back("consent");
    return httpAnswer(
        200,
        page("Sign in to VOLO Launcher",
             "<p>Continue as <b>" + htmlEscape(account.userName) + "</b> (" + htmlEscape(account.userEmail) +
                 ")?</p><p>VOLO Launcher will see your name and your e-mail address.</p>"
                 "<form method=\"get\" action=\"/consent\"><input type=\"hidden\" name=\"request\" value=\"" +
                 id +
                 "\"><button name=\"answer\" value=\"allow\">Allow</button>"
                 "<button name=\"answer\" value=\"deny\">Deny</button></form>"),
        kHtml);
}

std::string IdentityProvider::Service::answerConsent(const HttpRequest& request) {
    const auto found = requests.extract(request.parameter("request"));
    if (found.empty()) return refusePage("unknown consent request");
    Grant grant = found.mapped();
    httplib::Params answer = {{"state", grant.state}};
    if (faults.denyConsent || request.parameter("answer") != "allow") {
        events.emplace_back("refused: consent denied");
        answer.emplace("error", "access_denied");
    } else {
        const std::string code = "4/0" + randomHex(24); // contains a slash, to test the launcher's encodings
        answer.emplace("code", code);
        answer.emplace("scope", "openid email profile");
        grant.codeIssued = Clock::now();
        codes[code] = grant;
        seenSecrets.insert(code);
        events.emplace_back("code");
    }
    return httpAnswer(302, "", kHtml,
                      "Location: " + httplib::append_query_params(grant.redirectUri + "/", answer) + "\r\n");
}

// --- the launcher's side ---------------------------------------------------------------------------------------------

std::string IdentityProvider::Service::refuse(int status, const char* error, const std::string& why) {
    events.push_back("refused: " + why);
    return httpAnswer(status, jsonObject({{"error", error}, {"error_description", why}}));
}

// Returns the response that a fault demands; empty if there is no fault.
std::string IdentityProvider::Service::faultAnswer(int status, const std::string& body, const char* name) {
    if (status == 0 && body.empty()) return {};
    const int answered = status != 0 ? status : 200;
    const std::string refusal = refuse(answered, "server_error", name);
    return body.empty() ? refusal : httpAnswer(answered, body);
}

// Returns why a code is refused; empty if it is valid. After this call the code is used up, even if it was refused.
std::string IdentityProvider::Service::redeemCode(const HttpRequest& request) {
    const auto found = codes.extract(request.parameter("code"));
    if (found.empty()) return "unknown code";
    seenSecrets.insert(request.parameter("code_verifier"));
    const Grant& grant = found.mapped();
    if (Clock::now() - grant.codeIssued > kCodeLifetime) return "expired code";
    if (request.parameter("redirect_uri") != grant.redirectUri) return "redirect_uri differs";
    const std::string verifier = request.parameter("code_verifier");
    if (verifier.size() < 43 || verifier.size() > 128) return "code_verifier has a wrong length";
    if (s256Challenge(verifier) != grant.challenge) return "code_verifier does not match";
    return {};
}

std::string IdentityProvider::Service::answerToken(const HttpRequest& request) {
    std::string fault = faultAnswer(faults.tokenStatus, faults.tokenBody, "token fault");
    if (!fault.empty()) return fault;
    if (request.header("content-type") != "application/x-www-form-urlencoded") {
        return refuse(400, "invalid_request", "not a form");
    }
    if (request.parameter("client_id") != account.clientId ||
        request.parameter("client_secret") != account.clientSecret) {
        return refuse(401, "invalid_client", "wrong client credentials");
    }
    const std::string grantType = request.parameter("grant_type");
    const bool isRefresh = grantType == "refresh_token";
    if (isRefresh) {
        if (!refreshTokens.contains(request.parameter("refresh_token"))) {
            return refuse(400, "invalid_grant", "unknown refresh token");
        }
    } else if (grantType == "authorization_code") {
        const std::string why = redeemCode(request);
        if (!why.empty()) return refuse(400, "invalid_grant", why);
    } else {
        return refuse(400, "unsupported_grant_type", "unknown grant_type");
    }

    events.emplace_back(isRefresh ? "refresh" : "token");
    std::vector<std::pair<const char*, std::string>> members = {{"token_type", "Bearer"}};
    if (!faults.withoutAccessToken) {
        members.emplace_back("access_token", "ya29." + randomHex(32));
        accessTokens.insert(members.back().second);
    }
    if (isRefresh ? faults.rotateRefreshToken : !faults.withoutRefreshToken) {
        members.emplace_back("refresh_token", "1//0" + randomHex(32));
        refreshTokens.insert(members.back().second);
    }
    return httpAnswer(200, jsonObject(members));
}

std::string IdentityProvider::Service::answerUserInfo(const HttpRequest& request) {
    const std::string authorization = request.header("authorization");
    if (!authorization.starts_with("Bearer ") || !accessTokens.contains(authorization.substr(7))) {
        return refuse(401, "invalid_token", "unknown access token");
    }
    std::string fault = faultAnswer(faults.userInfoStatus, faults.userInfoBody, "userinfo fault");
    if (!fault.empty()) return fault;
    events.emplace_back("userinfo");
    std::vector<std::pair<const char*, std::string>> members = {{"sub", "100000000000000000001"}};
    if (!faults.withoutName) members.emplace_back("name", account.userName);
    if (!faults.withoutEmail) members.emplace_back("email", account.userEmail);
    return httpAnswer(200, jsonObject(members));
}

// --- the public interface --------------------------------------------------------------------------------------------

IdentityProvider::IdentityProvider(const CertificateAuthority& authority, const IdentityProviderAccount& account,
                                   int port, const std::vector<std::string>& moreNames) {
    ServerCertificateRequest request;
    request.dnsNames = {"localhost"};
    request.ipAddresses = {"127.0.0.1"};
    request.commonName = "localhost";
    request.dnsNames.insert(request.dnsNames.end(), moreNames.begin(), moreNames.end());
    service_ = std::make_unique<Service>(authority.issue(request), account, port);
}

IdentityProvider::~IdentityProvider() = default;

int IdentityProvider::port() const {
    return service_->server.port();
}

std::string IdentityProvider::authorizationUrl() const {
    return "https://127.0.0.1:" + std::to_string(port()) + "/o/oauth2/v2/auth";
}

void IdentityProvider::setFaults(const IdentityProviderFaults& faults) {
    const std::lock_guard<std::mutex> lock(service_->mutex);
    service_->faults = faults;
}

std::vector<std::string> IdentityProvider::events() const {
    const std::lock_guard<std::mutex> lock(service_->mutex);
    return service_->events;
}

std::string IdentityProvider::issueRefreshToken() {
    const std::lock_guard<std::mutex> lock(service_->mutex);
    return *service_->refreshTokens.insert("1//0" + randomHex(32)).first;
}

void IdentityProvider::acceptRefreshToken(const std::string& token) {
    const std::lock_guard<std::mutex> lock(service_->mutex);
    service_->refreshTokens.insert(token);
}

std::vector<std::string> IdentityProvider::secrets() const {
    const std::lock_guard<std::mutex> lock(service_->mutex);
    std::vector<std::string> all = {service_->account.clientSecret};
    for (const std::set<std::string>* some :
         {&service_->seenSecrets, &service_->refreshTokens, &service_->accessTokens})
        all.insert(all.end(), some->begin(), some->end());
    return all;
}

void IdentityProvider::revokeRefreshTokens() {
    const std::lock_guard<std::mutex> lock(service_->mutex);
    service_->refreshTokens.clear();
}
