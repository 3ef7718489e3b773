#pragma once

// What the programs in this directory share: servers for the six requests of the launcher, and the resources that this
// process uses.

#include <array>
#include <atomic>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "install/artifact_authenticity.h"
#include "publish/keys.h"
#include "support/tls_server.h"
#include "support/trusted_authority.h"

enum class Fetch : std::size_t { Manifest, Package, Statement, Code, Renewal, UserInfo };
inline constexpr std::array<const char*, 6> kFetchNames = {"manifest", "package", "statement",
                                                           "code",     "renewal", "user info"};

inline constexpr char kUserEmail[] = "ada@sandbox.test";
inline constexpr std::int64_t kServerTime = 1000000; // statements are valid at this time

// One server behaves well. Each fetch can be sent to another port instead.
class LauncherServers {
  public:
    // Writes the answer to one request. `body` is the body of the right answer.
    using Answer = std::function<void(TlsConnection& connection, const std::string& body)>;

    explicit LauncherServers(Answer answer = answerWell);
    static void answerWell(TlsConnection& connection, const std::string& body);

    // Reads a request and returns the body of its right answer.
    [[nodiscard]] std::string bodyFor(TlsConnection& connection) const;

    [[nodiscard]] int port() const { return server_.port(); }
    [[nodiscard]] std::string manifestUrl() const;
    [[nodiscard]] ArtifactAuthenticity authenticity() const;

    // Sends all fetches to the good server, then this one to another port.
    void redirect(Fetch fetch, int port);

    std::atomic<int> version = 1; // of the offered release

  private:
    [[nodiscard]] std::string address(Fetch fetch) const;

    TrustedAuthority trust_;
    const std::vector<PublisherKey> keys_;
    std::array<std::atomic<int>, 6> ports_ = {};
    TlsServer server_;
};

// Sends the redirect of a browser that allowed the sign-in to the launcher.
void allowSignIn(const std::string& authorizationUrl);

struct Resources {
    long descriptors = 0; // on Windows: handles
    long threads = 0;     // on Windows always 0
    long kib = 0;         // memory in use
    long peakKib = 0;     // its maximum since the last call of forgetPeak; on Windows since the start
};
[[nodiscard]] Resources resources();
void forgetPeak();
