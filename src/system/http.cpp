#include "system/http.h"

#include <algorithm>
#include <utility>

#include <httplib.h>
#include <openssl/ssl.h>
#include <openssl/x509v3.h>

#include "system/percent_encoding.h"

namespace {

constexpr int kConnectionTimeoutSeconds = 15;

// cpp-httplib 0.53.1 hides OpenSSL's context behind tls_context() and deprecates ssl_context().
template<class Client>
SSL_CTX* tlsContext(const Client& client) {
    if constexpr (requires { client.tls_context(); }) {
        return static_cast<SSL_CTX*>(client.tls_context());
    } else {
        return client.ssl_context();
    }
}

// cpp-httplib 0.18.7 accepts a certificate by its common name when no alternative name matches. So OpenSSL checks the
// host too, against the alternative names only.
bool requireHostInCertificate(SSL_CTX* context, const std::string& host) {
    X509_VERIFY_PARAM* rules = SSL_CTX_get0_param(context);
    X509_VERIFY_PARAM_set_hostflags(rules, X509_CHECK_FLAG_NEVER_CHECK_SUBJECT);
    return X509_VERIFY_PARAM_set1_ip_asc(rules, host.c_str()) == 1 ||
           X509_VERIFY_PARAM_set1_host(rules, host.data(), host.size()) == 1;
}

// cpp-httplib 0.18.7 sends no User-Agent on a request whose body goes to a receiver. Every request carries it.
httplib::Headers withAgent(const HttpFields& headers) {
    httplib::Headers all(headers.begin(), headers.end());
    all.emplace("User-Agent", std::string("cpp-httplib/") + CPPHTTPLIB_VERSION);
    return all;
}

// Encoded here because the library's versions encode Params differently: cpp-httplib 0.53.1 writes a space as "+".
std::string formBody(HttpFields fields) {
    std::sort(fields.begin(), fields.end());
    std::string body;
    for (const auto& [key, value] : fields) {
        if (!body.empty()) body += '&';
        body += percentEncode(key) + '=' + percentEncode(value);
    }
    return body;
}

// One client for one request. Every request of the launcher is set up here.
class Request {
  public:
    explicit Request(const HttpsServer& server)
        : client_(server.host, server.port) {
        client_.set_connection_timeout(kConnectionTimeoutSeconds, 0);
        if (server.readTimeoutSeconds > 0) client_.set_read_timeout(server.readTimeoutSeconds, 0);
        client_.enable_server_certificate_verification(true);
        usable_ = client_.is_valid() && requireHostInCertificate(tlsContext(client_), server.host);
    }

    template<class Send>
    HttpsAnswer answerTo(const Send& send) {
        HttpsAnswer answer;
        if (!usable_) return answer;
        httplib::Result result = send(client_);
        if (!result) return answer;
        answer.answered = true;
        answer.status = result->status;
        answer.body = std::move(result->body);
        return answer;
    }

  private:
    httplib::SSLClient client_;
    bool usable_ = false;
};

} // namespace

HttpsAnswer httpsGet(const HttpsServer& server, const std::string& path, const HttpFields& headers,
                     std::size_t bodyLimit) {
    int status = 0;
    std::string body;
    const httplib::ResponseHandler onHeaders = [&](const httplib::Response& response) {
        status = response.status;
        return true;
    };
    const httplib::ContentReceiver onBody = [&](const char* data, std::size_t size) {
        body.append(data, size);
        return body.size() <= bodyLimit;
    };
    HttpsAnswer answer = Request(server).answerTo(
        [&](httplib::SSLClient& client) { return client.Get(path, withAgent(headers), onHeaders, onBody); });
    if (body.size() > bodyLimit) { // our receiver ended the request, which the library reports as no answer
        answer.answered = true;
        answer.status = status;
    }
    if (answer.answered) answer.body = std::move(body);
    return answer;
}

HttpsAnswer httpsPostForm(const HttpsServer& server, const std::string& path, const HttpFields& fields) {
    const std::string form = formBody(fields);
    return Request(server).answerTo([&](httplib::SSLClient& client) {
        return client.Post(path, withAgent({}), form, "application/x-www-form-urlencoded");
    });
}

HttpsAnswer httpsDownload(const HttpsServer& server, const std::string& path,
                          const std::function<bool(const char* data, std::size_t size)>& receive,
                          const std::function<bool(std::int64_t received, std::int64_t total)>& progress) {
    const httplib::ContentReceiver onBody = receive;
    return Request(server).answerTo([&](httplib::SSLClient& client) {
        return client.Get(path, withAgent({}), onBody, [&](std::uint64_t received, std::uint64_t total) {
            return progress(static_cast<std::int64_t>(received), static_cast<std::int64_t>(total));
        });
    });
}
