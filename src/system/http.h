#pragma once

// HTTPS requests: certificates and host names are verified against the system's trust store, redirects are not
// followed, nothing is compressed, and each request has a connection of its own. Blocking; worker threads only. Every
// call makes its own client, so nothing is shared between threads.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

// Splits an https URL. `path` keeps query and fragment; without one it is "/". `port` is 443 unless the URL names one
// from 1 to 65535. False for anything else (another scheme, user information, a bracketed address, an empty host); the
// outputs are then meaningless.
[[nodiscard]] bool parseHttpsUrl(const std::string& url, std::string& host, int& port, std::string& path);

// Ends requests from another thread. Copies share one state: keep one, and pass the other with the request. Any thread.
class HttpAbort {
  public:
    HttpAbort();

    // The requests that use this state, now and later, end with no answer; a running one within 100 ms, whether it
    // looks up a name, connects, shakes hands, waits or reads. There is no way back: use a new object for new requests.
    void abort();

    [[nodiscard]] bool isAborted() const;

    struct State;

  private:
    friend class HttpExchange;
    std::shared_ptr<State> state_;
};

// The number of requests whose thread still runs: an aborted request can leave a thread behind that waits for a name
// server. main must leave by std::_Exit when there are some, because they still use static objects.
[[nodiscard]] int unfinishedRequests();

struct HttpsServer {
    std::string host;
    int port = 443;
    int readTimeoutSeconds = 0; // 0: the library's default of 300 seconds
    HttpAbort abort = {};
};

// httpsGet and httpsPostForm end as a whole, headers included, after twice the read time-out. httpsDownload has no such
// limit. A request has three outcomes: no answer (no connection, TLS or certificate failure, time-out, truncated body),
// an answer with another status, and an answer with status 200 and its body. Callers test the status for exactly 200.
struct HttpsAnswer {
    bool answered = false;
    int status = 0;
    std::string body;
};

using HttpFields = std::vector<std::pair<std::string, std::string>>;

// The most bytes of a body that are kept in memory. A longer body ends the request early: the answer then has
// `answered` and its status, and `body` holds more than `bodyLimit` bytes but not the whole body.
inline constexpr std::size_t kDefaultBodyLimit = 4u << 20;

[[nodiscard]] HttpsAnswer httpsGet(const HttpsServer& server, const std::string& path, const HttpFields& headers = {},
                                   std::size_t bodyLimit = kDefaultBodyLimit);

// Posts the fields as application/x-www-form-urlencoded, sorted by key and percent-encoded.
[[nodiscard]] HttpsAnswer httpsPostForm(const HttpsServer& server, const std::string& path, const HttpFields& fields);

// Streams the body of a GET to `receive` in pieces of the library's choosing; the answer's `body` stays empty. Bodies
// of answers other than 200 arrive too: only the status afterwards tells. The callbacks run on another thread
// while the caller waits. One that returns false ends the request, and the result is no answer. `progress` gets the
// bytes so far and the announced total; it may never be called when no length was announced.
[[nodiscard]] HttpsAnswer httpsDownload(const HttpsServer& server, const std::string& path,
                                        const std::function<bool(const char* data, std::size_t size)>& receive,
                                        const std::function<bool(std::int64_t received, std::int64_t total)>& progress);
