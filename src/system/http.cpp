#include "system/http.h"

#include <httplib.h>
#include <openssl/x509v3.h>

namespace {

constexpr int kConnectionTimeoutSeconds = 15;

// Later library versions hide OpenSSL's context behind a handle and deprecate the plain accessor.
template<class Client>
SSL_CTX* tlsContext(const Client& client) {
    if constexpr (requires { client.tls_context(); }) {
        return static_cast<SSL_CTX*>(client.tls_context());
    } else {
        return client.ssl_context();
    }
}

// The library's own host check falls back to the certificate's common name in some versions. OpenSSL's looks at the
// alternative names alone, and a mismatch fails the verification whatever the library does afterwards.
bool requireHostInCertificate(SSL_CTX* context, const std::string& host) {
    X509_VERIFY_PARAM* rules = SSL_CTX_get0_param(context);
    X509_VERIFY_PARAM_set_hostflags(rules, X509_CHECK_FLAG_NEVER_CHECK_SUBJECT);
    return X509_VERIFY_PARAM_set1_ip_asc(rules, host.c_str()) == 1 ||
           X509_VERIFY_PARAM_set1_host(rules, host.data(), host.size()) == 1;
}

// A request whose body goes to a receiver lacks the library's usual agent in some versions; every request carries it.
httplib::Headers withAgent(const HttpFields& headers) {
    httplib::Headers all(headers.begin(), headers.end());
    all.emplace("User-Agent", std::string("cpp-httplib/") + CPPHTTPLIB_VERSION);
    return all;
}

// One client for one request, set up the one way that all requests go out.
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
    if (body.size() > bodyLimit) { // given up by us: the library knows no answer then
        answer.answered = true;
        answer.status = status;
    }
    if (answer.answered) answer.body = std::move(body);
    return answer;
}

HttpsAnswer httpsPostForm(const HttpsServer& server, const std::string& path, const HttpFields& fields) {
    return Request(server).answerTo(
        [&](httplib::SSLClient& client) { return client.Post(path, httplib::Params(fields.begin(), fields.end())); });
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
