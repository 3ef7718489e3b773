#include "sandbox/identity_provider.h"

#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>
#include <set>
#include <utility>

#include <httplib.h>
#include <openssl/evp.h>
#include <openssl/rand.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include "sandbox/https_server.h"

namespace {

using Clock = std::chrono::steady_clock;
using JsonWriter = rapidjson::Writer<rapidjson::StringBuffer>;

constexpr auto kCodeLifetime = std::chrono::seconds(60);

std::string randomHex(std::size_t byteCount) {
    std::vector<unsigned char> bytes(byteCount);
    if (RAND_bytes(bytes.data(), static_cast<int>(byteCount)) != 1) return {};
    std::string text;
    for (const unsigned char byte : bytes)
        text += {"0123456789abcdef"[byte >> 4], "0123456789abcdef"[byte & 15]};
    return text;
}

// By OpenSSL's base64 and not by the launcher's own: what checks must not share the code of what is checked.
std::string s256Challenge(const std::string& verifier) {
    unsigned char digest[32];
    unsigned char encoded[48];
    EVP_Digest(verifier.data(), verifier.size(), digest, nullptr, EVP_sha256(), nullptr);
    EVP_EncodeBlock(encoded, digest, sizeof digest);
    std::string text(reinterpret_cast<const char*>(encoded), 43); // the 44th is padding
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

// A parameter that occurs exactly once; anything else is as good as absent to a strict provider.
std::string single(const httplib::Request& request, const char* key) {
    return request.get_param_value_count(key) == 1 ? request.get_param_value(key) : "";
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

// What an authorization request asks for, kept until the user has answered, and then with the code.
struct Grant {
    std::string redirectUri;
    std::string state;
    std::string challenge;
    Clock::time_point codeIssued;
};

} // namespace

struct IdentityProvider::Service {
    Service(const ServerIdentity& identity, const IdentityProviderAccount& user);
    ~Service();

    IdentityProviderAccount account;
    LoopbackHttpsServer server;
    int port = 0;

    std::mutex mutex; // guards everything below
    std::condition_variable stopping;
    bool isStopping = false;
    IdentityProviderFaults faults;
    std::vector<std::string> events;
    std::map<std::string, Grant> requests; // waiting for the user's answer
    std::map<std::string, Grant> codes;
    std::set<std::string> refreshTokens;
    std::set<std::string> accessTokens;
    std::set<std::string> seenSecrets; // codes and verifiers, which are used up at once

    void showConsent(const httplib::Request& request, httplib::Response& response);
    void answerConsent(const httplib::Request& request, httplib::Response& response);
    void answerToken(const httplib::Request& request, httplib::Response& response);
    void answerUserInfo(const httplib::Request& request, httplib::Response& response);

    std::string refusalOf(const httplib::Request& authorization) const;
    std::string redeemCode(const httplib::Request& request);
    void refusePage(httplib::Response& response, const std::string& why);
    void refuse(httplib::Response& response, int status, const char* error, const std::string& why);
};

IdentityProvider::Service::Service(const ServerIdentity& identity, const IdentityProviderAccount& user)
    : account(user)
    , server(identity) {
    using httplib::Request;
    using httplib::Response;
    httplib::SSLServer& on = server.handlers();
    on.Get("/o/oauth2/v2/auth", [this](const Request& in, Response& out) { showConsent(in, out); });
    on.Get("/consent", [this](const Request& in, Response& out) { answerConsent(in, out); });
    on.Post("/token", [this](const Request& in, Response& out) { answerToken(in, out); });
    on.Get("/v1/userinfo", [this](const Request& in, Response& out) { answerUserInfo(in, out); });
}

IdentityProvider::Service::~Service() {
    {
        const std::lock_guard<std::mutex> lock(mutex);
        isStopping = true;
    }
    stopping.notify_all();
    server.stop();
}

// --- the browser's side ----------------------------------------------------------------------------------------------

std::string IdentityProvider::Service::refusalOf(const httplib::Request& authorization) const {
    if (single(authorization, "client_id") != account.clientId) return "unknown client_id";
    if (!isLoopbackRedirect(single(authorization, "redirect_uri"))) return "redirect_uri is not a loopback address";
    if (single(authorization, "response_type") != "code") return "response_type is not code";
    for (const char* scope : {"openid", "email", "profile"}) {
        if (!hasScope(single(authorization, "scope"), scope)) return std::string("scope lacks ") + scope;
    }
    if (single(authorization, "code_challenge_method") != "S256") return "code_challenge_method is not S256";
    if (single(authorization, "code_challenge").size() != 43) return "code_challenge is not 43 characters long";
    if (single(authorization, "state").empty()) return "state is missing";
    if (single(authorization, "access_type") != "offline") return "access_type is not offline";
    return {};
}

void IdentityProvider::Service::refusePage(httplib::Response& response, const std::string& why) {
    events.push_back("refused: " + why);
    response.status = 400;
    response.set_content(page("Error 400", "<p>The request is invalid: " + htmlEscape(why) + ".</p>"), "text/html");
}

void IdentityProvider::Service::showConsent(const httplib::Request& request, httplib::Response& response) {
    const std::lock_guard<std::mutex> lock(mutex);
    const std::string why = refusalOf(request);
    if (!why.empty()) return refusePage(response, why);
    const std::string id = randomHex(16);
    requests[id] = {single(request, "redirect_uri"), single(request, "state"), single(request, "code_challenge"), {}};
    events.emplace_back("consent");
    response.set_content(
        page("Sign in to VOLO Launcher",
             "<p>Continue as <b>" + htmlEscape(account.userName) + "</b> (" + htmlEscape(account.userEmail) +
                 ")?</p><p>VOLO Launcher will see your name and your e-mail address.</p>"
                 "<form method=\"get\" action=\"/consent\"><input type=\"hidden\" name=\"request\" value=\"" +
                 id +
                 "\"><button name=\"answer\" value=\"allow\">Allow</button>"
                 "<button name=\"answer\" value=\"deny\">Deny</button></form>"),
        "text/html");
}

void IdentityProvider::Service::answerConsent(const httplib::Request& request, httplib::Response& response) {
    const std::lock_guard<std::mutex> lock(mutex);
    const auto found = requests.extract(single(request, "request"));
    if (found.empty()) return refusePage(response, "unknown consent request");
    Grant grant = found.mapped();
    httplib::Params answer = {{"state", grant.state}};
    if (faults.denyConsent || single(request, "answer") != "allow") {
        events.emplace_back("refused: consent denied");
        answer.emplace("error", "access_denied");
    } else {
        const std::string code = "4/0" + randomHex(24); // with a slash, which must survive all encodings
        answer.emplace("code", code);
        answer.emplace("scope", "openid email profile");
        grant.codeIssued = Clock::now();
        codes[code] = grant;
        seenSecrets.insert(code);
        events.emplace_back("code");
    }
    response.set_redirect(httplib::append_query_params(grant.redirectUri + "/", answer));
}

// --- the launcher's side ---------------------------------------------------------------------------------------------

void IdentityProvider::Service::refuse(httplib::Response& response, int status, const char* error,
                                       const std::string& why) {
    events.push_back("refused: " + why);
    response.status = status;
    response.set_content(jsonObject({{"error", error}, {"error_description", why}}), "application/json");
}

// Why the code is worth nothing; empty when it was good. A code is used up by the first attempt, good or bad.
std::string IdentityProvider::Service::redeemCode(const httplib::Request& request) {
    const auto found = codes.extract(single(request, "code"));
    if (found.empty()) return "unknown code";
    seenSecrets.insert(single(request, "code_verifier"));
    const Grant& grant = found.mapped();
    if (Clock::now() - grant.codeIssued > kCodeLifetime) return "expired code";
    if (single(request, "redirect_uri") != grant.redirectUri) return "redirect_uri differs";
    const std::string verifier = single(request, "code_verifier");
    if (verifier.size() < 43 || verifier.size() > 128) return "code_verifier has a wrong length";
    if (s256Challenge(verifier) != grant.challenge) return "code_verifier does not match";
    return {};
}

void IdentityProvider::Service::answerToken(const httplib::Request& request, httplib::Response& response) {
    std::unique_lock<std::mutex> lock(mutex);
    stopping.wait_for(lock, std::chrono::milliseconds(faults.tokenDelayMilliseconds), [this] { return isStopping; });
    if (faults.tokenStatus != 0 || !faults.tokenBody.empty()) {
        refuse(response, faults.tokenStatus != 0 ? faults.tokenStatus : 200, "server_error", "token fault");
        if (!faults.tokenBody.empty()) response.set_content(faults.tokenBody, "application/json");
        return;
    }
    if (request.get_header_value("Content-Type") != "application/x-www-form-urlencoded") {
        return refuse(response, 400, "invalid_request", "not a form");
    }
    if (single(request, "client_id") != account.clientId || single(request, "client_secret") != account.clientSecret) {
        return refuse(response, 401, "invalid_client", "wrong client credentials");
    }
    const std::string grantType = single(request, "grant_type");
    const bool isRefresh = grantType == "refresh_token";
    if (isRefresh) {
        if (!refreshTokens.contains(single(request, "refresh_token"))) {
            return refuse(response, 400, "invalid_grant", "unknown refresh token");
        }
    } else if (grantType == "authorization_code") {
        const std::string why = redeemCode(request);
        if (!why.empty()) return refuse(response, 400, "invalid_grant", why);
    } else {
        return refuse(response, 400, "unsupported_grant_type", "unknown grant_type");
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
    response.set_content(jsonObject(members), "application/json");
}

void IdentityProvider::Service::answerUserInfo(const httplib::Request& request, httplib::Response& response) {
    const std::lock_guard<std::mutex> lock(mutex);
    const std::string authorization = request.get_header_value("Authorization");
    if (!authorization.starts_with("Bearer ") || !accessTokens.contains(authorization.substr(7))) {
        return refuse(response, 401, "invalid_token", "unknown access token");
    }
    if (faults.userInfoStatus != 0 || !faults.userInfoBody.empty()) {
        refuse(response, faults.userInfoStatus != 0 ? faults.userInfoStatus : 200, "server_error", "userinfo fault");
        if (!faults.userInfoBody.empty()) response.set_content(faults.userInfoBody, "application/json");
        return;
    }
    events.emplace_back("userinfo");
    std::vector<std::pair<const char*, std::string>> members = {{"sub", "100000000000000000001"}};
    if (!faults.withoutName) members.emplace_back("name", account.userName);
    if (!faults.withoutEmail) members.emplace_back("email", account.userEmail);
    response.set_content(jsonObject(members), "application/json");
}

// --- the provider as its owner sees it -------------------------------------------------------------------------------

IdentityProvider::IdentityProvider(const CertificateAuthority& authority, const IdentityProviderAccount& account,
                                   int port, const std::vector<std::string>& moreNames) {
    ServerCertificateRequest request;
    request.dnsNames = {"localhost"};
    request.ipAddresses = {"127.0.0.1"};
    request.commonName = "localhost";
    request.dnsNames.insert(request.dnsNames.end(), moreNames.begin(), moreNames.end());
    service_ = std::make_unique<Service>(authority.issue(request), account);
    service_->port = service_->server.start(port);
}

IdentityProvider::~IdentityProvider() = default;

int IdentityProvider::port() const {
    return service_->port;
}

std::string IdentityProvider::authorizationUrl() const {
    return "https://127.0.0.1:" + std::to_string(service_->port) + "/o/oauth2/v2/auth";
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
