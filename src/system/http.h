#pragma once

// HTTPS requests. Certificates are verified against the system's trust store, and host names against the certificate.
// Redirects are not followed. Compressed responses are not requested. Each request opens its own connection and shares
// nothing with other threads. Blocking; worker threads only.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

// Ends requests from another thread. Copies share one state: keep one copy and pass another to the request. Any thread.
class HttpAbort {
  public:
    HttpAbort();

    // Ends all running and future requests that use this state, without a response. The call of a running request
    // returns within 100 ms, even during a name lookup, a connection attempt or a TLS handshake. An abort is final: use
    // a new object for new requests.
    void abort();

    [[nodiscard]] bool isAborted() const;

    struct State;

  private:
    friend class HttpExchange;
    std::shared_ptr<State> state_;
};

// Returns the number of requests whose thread still runs. The thread of an aborted request may still wait for a name
// server. If the number is not 0 at the end of main, main must exit with std::_Exit, because these threads use static
// objects.
[[nodiscard]] int unfinishedRequests();

// Sets the longest read time-out of later requests. Before the first call it is 300 seconds. Test programs set a
// shorter one, so that their requests to silent servers end sooner. Any thread.
void setLongestReadTimeout(int seconds);

struct HttpsServer {
    std::string host;
    int port = 443;
    int readTimeoutSeconds = 0; // setLongestReadTimeout limits it; 0: use that limit
    HttpAbort abort = {};
};

// The result of a request. `answered` is false if there was no complete response: no connection, TLS or certificate
// failure, time-out, or truncated body. If it is true, callers must check that `status` is 200 before they use the
// body. httpsGet and httpsPostForm end after twice the read time-out at the latest. httpsDownload has no such limit.
struct HttpsAnswer {
    bool answered = false;
    int status = 0;
    std::string body;
};

using HttpFields = std::vector<std::pair<std::string, std::string>>;

// The default of `bodyLimit`, the maximum size of a body in memory. A longer body ends the request early. In that case
// `answered` is true, `status` is set, and `body` contains more than `bodyLimit` bytes, but perhaps not the whole body.
inline constexpr std::size_t kDefaultBodyLimit = 4u << 20;

[[nodiscard]] HttpsAnswer httpsGet(const HttpsServer& server, const std::string& path, const HttpFields& headers = {},
                                   std::size_t bodyLimit = kDefaultBodyLimit);

// Posts the fields as application/x-www-form-urlencoded, sorted by key and percent-encoded.
[[nodiscard]] HttpsAnswer httpsPostForm(const HttpsServer& server, const std::string& path, const HttpFields& fields);

// Sends a GET request and passes the body to `receive` in pieces. The result's `body` stays empty. `receive` also gets
// the body of a response whose status is not 200, so check the status afterwards. The callbacks run on another thread
// while the caller waits. A callback that returns false ends the request; then `answered` is false. `progress` gets the
// number of bytes so far and the Content-Length. If the response has no Content-Length, `progress` may
// never be called.
[[nodiscard]] HttpsAnswer httpsDownload(const HttpsServer& server, const std::string& path,
                                        const std::function<bool(const char* data, std::size_t size)>& receive,
                                        const std::function<bool(std::int64_t received, std::int64_t total)>& progress);
