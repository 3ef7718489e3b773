#include "system/http.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <string>
#include <utility>

#include <httplib.h>
#include <openssl/ssl.h>
#include <openssl/x509v3.h>

#include "system/http_exchange.h"
#include "system/url.h"

namespace {

constexpr int kConnectionTimeoutSeconds = 15;

std::atomic<int> longestReadTimeoutSeconds = 300; // cpp-httplib's default

int readTimeoutOf(const HttpsServer& server) {
    const int longest = longestReadTimeoutSeconds;
    return server.readTimeoutSeconds > 0 ? std::min(server.readTimeoutSeconds, longest) : longest;
}

// Returns the client's OpenSSL context. cpp-httplib 0.53.1 has tls_context() for it and deprecates ssl_context(). Older
// versions have only ssl_context().
template<class Client>
SSL_CTX* tlsContext(const Client& client) {
    if constexpr (requires { client.tls_context(); }) {
        return static_cast<SSL_CTX*>(client.tls_context());
    } else {
        return client.ssl_context();
    }
}

// Makes OpenSSL compare the host only with the certificate's alternative names. Without this, cpp-httplib 0.18.7
// accepts a matching common name even if no alternative name matches.
bool requireHostInCertificate(SSL_CTX* context, const std::string& host) {
    X509_VERIFY_PARAM* rules = SSL_CTX_get0_param(context);
    X509_VERIFY_PARAM_set_hostflags(rules, X509_CHECK_FLAG_NEVER_CHECK_SUBJECT);
    return X509_VERIFY_PARAM_set1_ip_asc(rules, host.c_str()) == 1 ||
           X509_VERIFY_PARAM_set1_host(rules, host.data(), host.size()) == 1;
}

// Encodes the fields as a form. cpp-httplib's own encoder is not used, because its output depends on the version:
// 0.53.1 writes a space as "+".
std::string formBody(HttpFields fields) {
    std::sort(fields.begin(), fields.end());
    std::string body;
    for (const auto& [key, value] : fields) {
        if (!body.empty()) body += '&';
        body += percentEncode(key) + '=' + percentEncode(value);
    }
    return body;
}

// Sets the progress callback, whose name differs between cpp-httplib 0.18.7 and 0.53.1.
template<class Request, class Progress>
void setProgress(Request& request, const Progress& progress) {
    if constexpr (requires { request.download_progress; }) {
        request.download_progress = progress;
    } else {
        request.progress = progress;
    }
}

httplib::Request newRequest(const char* method, const std::string& path, const HttpFields& headers) {
    httplib::Request request;
    request.method = method;
    request.path = path;
    for (const auto& header : headers) // insert() of cpp-httplib 0.53.1 accepts no range
        request.headers.insert(header);
    // cpp-httplib 0.18.7 sends no User-Agent in requests with a content receiver.
    request.headers.emplace("User-Agent", std::string("cpp-httplib/") + CPPHTTPLIB_VERSION);
    return request;
}

// Sends one request with a new client. All requests of the launcher use this function.
HttpsAnswer send(HttpExchange& exchange, const HttpsServer& server, const httplib::Request& request) {
    httplib::SSLClient client(server.host, server.port);
    client.set_connection_timeout(kConnectionTimeoutSeconds, 0);
    client.set_read_timeout(readTimeoutOf(server), 0);
    client.enable_server_certificate_verification(true);
    client.set_socket_options([&exchange](socket_t socket) { exchange.watch(static_cast<std::intptr_t>(socket)); });
    HttpsAnswer answer;
    if (!client.is_valid() || !requireHostInCertificate(tlsContext(client), server.host)) return answer;
    // cpp-httplib 0.18.7 ends each request with a sleep of 100 ms, in which it waits for the server's close_notify. A
    // quiet shutdown skips this wait. It loses no data, because the whole answer has been read by then.
    SSL_CTX_set_quiet_shutdown(tlsContext(client), 1);
    const httplib::Result result = client.send(request);
    if (!result) return answer;
    answer.answered = true;
    answer.status = result->status;
    return answer;
}

// Sends a request and keeps the response's body in memory, up to `bodyLimit` bytes. Ends after twice the read time-out
// at the latest.
HttpsAnswer sendForSmallAnswer(const HttpsServer& server, const httplib::Request& request, std::size_t bodyLimit) {
    return HttpExchange::run(
        server.abort, std::chrono::seconds(2 * readTimeoutOf(server)),
        [server, request = request, bodyLimit](HttpExchange& exchange) mutable {
            int status = 0;
            std::string body;
            request.response_handler = [&](const httplib::Response& response) {
                status = response.status;
                return true;
            };
            request.content_receiver = [&](const char* data, std::size_t size, std::uint64_t, std::uint64_t) {
                body.append(data, size);
                return body.size() <= bodyLimit;
            };
            HttpsAnswer answer = send(exchange, server, request);
            if (body.size() > bodyLimit) { // our receiver ended the request, so the library reported an error
                answer.answered = true;
                answer.status = status;
            }
            if (answer.answered) answer.body = std::move(body);
            return answer;
        });
}

} // namespace

void setLongestReadTimeout(int seconds) {
    longestReadTimeoutSeconds = seconds;
}

HttpsAnswer httpsGet(const HttpsServer& server, const std::string& path, const HttpFields& headers,
                     std::size_t bodyLimit) {
    return sendForSmallAnswer(server, newRequest("GET", path, headers), bodyLimit);
}

HttpsAnswer httpsPostForm(const HttpsServer& server, const std::string& path, const HttpFields& fields) {
    httplib::Request request = newRequest("POST", path, {{"Content-Type", "application/x-www-form-urlencoded"}});
    request.body = formBody(fields);
    return sendForSmallAnswer(server, request, kDefaultBodyLimit);
}

HttpsAnswer httpsDownload(const HttpsServer& server, const std::string& path,
                          const std::function<bool(const char* data, std::size_t size)>& receive,
                          const std::function<bool(std::int64_t received, std::int64_t total)>& progress) {
    constexpr auto unlimited = std::chrono::seconds(0);
    return HttpExchange::run(server.abort, unlimited, [server, path, receive, progress](HttpExchange& exchange) {
        httplib::Request request = newRequest("GET", path, {});
        request.content_receiver = [&](const char* data, std::size_t size, std::uint64_t, std::uint64_t) {
            return exchange.deliver([&] { return receive(data, size); });
        };
        setProgress(request, [&](std::uint64_t received, std::uint64_t total) {
            return exchange.deliver(
                [&] { return progress(static_cast<std::int64_t>(received), static_cast<std::int64_t>(total)); });
        });
        return send(exchange, server, request);
    });
}
