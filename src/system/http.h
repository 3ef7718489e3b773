#pragma once

// All outbound traffic: HTTPS only, certificates and host names verified against the system's trust store, no redirects
// followed, one connection per request, no compression. Blocking; called on worker threads only. Every call makes a
// client of its own, so nothing is shared between threads.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

// Splits an https URL. `path` keeps query and fragment; without one it is "/". `port` is 443 unless the URL names one
// from 1 to 65535. False for anything else (another scheme, user information, a bracketed address, an empty host); the
// outputs are then meaningless.
[[nodiscard]] bool parseHttpsUrl(const std::string& url, std::string& host, int& port, std::string& path);

struct HttpsServer {
    std::string host;
    int port = 443;
    int readTimeoutSeconds = 0; // 0: the library's default of 300 seconds
};

// The three outcomes of a request: no answer (no connection, TLS or certificate failure, time-out, cut body), an answer
// with some status, an answer with status 200 and its body. Callers test the status for exactly 200.
struct HttpsAnswer {
    bool answered = false;
    int status = 0;
    std::string body;
};

using HttpFields = std::vector<std::pair<std::string, std::string>>;

// `bodyLimit` bounds what is kept in memory. A longer body is refused while it arrives: the answer then has `answered`
// and its status, and `body` holds more than `bodyLimit` bytes but not all.
inline constexpr std::size_t kDefaultBodyLimit = 4u << 20;

HttpsAnswer httpsGet(const HttpsServer& server, const std::string& path, const HttpFields& headers = {},
                     std::size_t bodyLimit = kDefaultBodyLimit);

// The fields go out sorted by key, as application/x-www-form-urlencoded.
HttpsAnswer httpsPostForm(const HttpsServer& server, const std::string& path, const HttpFields& fields);

// Streams the body of a GET to `receive` as it arrives, in pieces of the library's choosing; `body` stays empty. Bodies
// of answers other than 200 arrive too: only the status afterwards tells. Either callback returns false to give up,
// which reads as no answer. `progress` gets the bytes so far and the announced total; a body of unannounced length may
// come without a single call of it.
HttpsAnswer httpsDownload(const HttpsServer& server, const std::string& path,
                          const std::function<bool(const char* data, std::size_t size)>& receive,
                          const std::function<bool(std::int64_t received, std::int64_t total)>& progress);
