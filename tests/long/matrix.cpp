// Runs the launcher against servers that misbehave, for each of its requests. Checks what the user sees, how long
// "Cancel", "Sign out" and closing take meanwhile, and how much memory the launcher needs.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <thread>

#include "long/launcher_run.h"
#include "support/eventually.h"
#include "system/http.h"

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr milliseconds kLongestEnd{2000}; // the goal is 100 ms, which a busy machine can miss
constexpr long kMostKib = 64 * 1024;

enum class Right { Never, Package, Always }; // the fetches that succeed
enum class Tls { Yes, Foreign, No };         // Foreign: with another host's certificate. No: without a handshake

// `text` is the answer, with these marks: @L is the length of the right body, @B is the right body, @D sends the rest
// slowly, for longer than a small answer may take, @E repeats the rest endlessly, @R resets the connection, @S stalls.
// If `text` is empty, the connection is refused.
struct Behaviour {
    const char* name;
    Right right;
    std::string text;
    Tls tls = Tls::Yes;
};

std::vector<Behaviour> behaviours() {
    const std::string ok = "HTTP/1.1 200 OK\r\n", end = "\r\n", good = "Content-Length: @L\r\n\r\n@B";
    std::string wide = "[";
    while (wide.size() < kDefaultBodyLimit - 1)
        wide += "0,";
    std::vector<Behaviour> all = {
        {"answers well", Right::Always, ok + good},
        {"speaks HTTP/1.0", Right::Always, "HTTP/1.0 200 OK\r\n" + good},
        {"sends no length and closes", Right::Always, ok + end + "@B"},
        {"refuses the connection", Right::Never, ""},
        {"resets in the handshake", Right::Never, "@R", Tls::No},
        {"hangs in the handshake", Right::Never, "@S", Tls::No},
        {"has another host's certificate", Right::Never, ok + good, Tls::Foreign},
        {"resets after the request", Right::Never, "@R"},
        {"hangs after the request", Right::Never, "@S"},
        {"resets in the header", Right::Never, ok + "@R"},
        {"drips the header", Right::Package, "@D" + ok + good},
        {"sends endless headers", Right::Never, ok + "@EX: xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx\r\n"},
        {"sends one endless header", Right::Never, ok + "X: @Ex"},
        {"announces 10^15 bytes", Right::Never, ok + "Content-Length: 1000000000000000\r\n\r\n@Ex"},
        {"sends an endless body", Right::Never, ok + end + "@Ex"},
        {"sends endless chunks", Right::Never, ok + "Transfer-Encoding: chunked\r\n\r\n@E8\r\nxxxxxxxx\r\n"},
        {"cuts the body", Right::Never, ok + "Content-Length: 9@L\r\n\r\n@B"},
        {"sends more than the length", Right::Never, ok + "Content-Length: 9\r\n\r\n@B"},
        {"drips the body", Right::Package, ok + "Content-Length: @L\r\n\r\n@D@B"},
        {"stalls in the body", Right::Never, ok + "Content-Length: 9@L\r\n\r\n@B@S"},
        {"sends an empty body", Right::Never, ok + "Content-Length: 0\r\n\r\n"},
        {"sends garbage for a header", Right::Never, "@E\x01garbage\n\xFF"},
        {"sends zero bytes", Right::Never, ok + end + "@B" + std::string(9, '\0')},
        {"sends broken UTF-8", Right::Never, ok + end + "\xFF\xC0@B"},
        {"sends a deep body", Right::Never, ok + end + std::string(kDefaultBodyLimit - 1, '[')},
        {"sends a wide body", Right::Never, ok + end + wide},
        {"compresses without being asked", Right::Never, ok + "Content-Encoding: gzip\r\n" + good},
        {"redirects to itself", Right::Never, "HTTP/1.1 302 Found\r\nLocation: /manifest\r\n" + good},
        {"redirects to http", Right::Never, "HTTP/1.1 302 Found\r\nLocation: http://127.0.0.1/\r\n" + good},
    };
    for (const char* status : {"204", "206", "304", "404", "500", "503"})
        all.push_back({status, Right::Never, std::string("HTTP/1.1 ") + status + " Status\r\n" + good});
    return all;
}

// Sends up to 80 MiB, until the client closes the connection. A client that keeps 80 MiB in memory exceeds kMostKib.
void writeEndlessly(TlsConnection& connection, const std::string& piece) {
    std::string block;
    while (block.size() < 16000)
        block += piece;
    for (std::size_t sent = 0; sent < std::size_t{80} << 20 && connection.write(block); sent += block.size()) {
    }
}

// Sends the text in about 4 s. finish() sets a read time-out with which a small answer may take 2 s.
void drip(TlsConnection& connection, const std::string& text) {
    const std::size_t size = text.size() / 40 + 1;
    for (std::size_t at = 0; at < text.size(); at += size)
        if (!connection.write(text.substr(at, size)) || !connection.pause(100)) return;
}

void behave(TlsConnection& connection, std::string text, const std::string& body) {
    for (const auto& [mark, value] : {std::pair{"@L", std::to_string(body.size())}, std::pair{"@B", body}})
        if (const std::size_t at = text.find(mark); at != std::string::npos) text.replace(at, 2, value);
    const std::size_t at = std::min({text.find("@D"), text.find("@E"), text.find("@R"), text.find("@S")});
    if (!connection.write(text.substr(0, at)) || at == std::string::npos) return;
    const std::string rest = text.substr(at + 2);
    switch (text[at + 1]) {
    case 'D':
        return drip(connection, rest);
    case 'E':
        return writeEndlessly(connection, rest);
    case 'R':
        return connection.reset();
    default:
        return connection.stall();
    }
}

class Matrix : LauncherRun {
  public:
    bool run(const std::string& part);

  private:
    void begin(Fetch fetch);
    void runFetch(const Behaviour& behaviour, Fetch fetch);
    void finish(const Behaviour& behaviour, Fetch fetch);
    milliseconds interrupt(Fetch fetch, bool close);
    void check(bool good, const Behaviour& behaviour, Fetch fetch, const std::string& what);

    const ServerIdentity foreign_ = TrustedAuthority::authority().issue({{"other.example"}, {"127.0.0.2"}, ""});
    std::atomic<int> reached_ = 0; // connections of the fetch under test
    milliseconds cancel_{0}, close_{0};
    long kib_ = 0;
    std::string outcomes_;
    int failures_ = 0;
};

void Matrix::check(bool good, const Behaviour& behaviour, Fetch fetch, const std::string& what) {
    if (good) return;
    std::printf("FAIL %s, fetch %d: %s\n", behaviour.name, static_cast<int>(fetch), what.c_str());
    ++failures_;
}

void Matrix::begin(Fetch fetch) {
    launch(fetch != Fetch::Code);
    app->updateCheckStarted = fetch > Fetch::Statement; // true: no update starts, only the sign-in is tested
}

// Runs the launcher against the server until the update or sign-in succeeds or fails by itself. Checks the outcome.
void Matrix::finish(const Behaviour& behaviour, Fetch fetch) {
    setLongestReadTimeout(1);
    begin(fetch);
    check(eventually([&] { return !isBusy(); }, std::chrono::seconds(120)), behaviour, fetch, "no end");
    const bool right =
        behaviour.right == Right::Always || (behaviour.right == Right::Package && fetch == Fetch::Package);
    const bool updates = fetch <= Fetch::Statement;
    const bool signedIn = app->signIn->state == SignInState::SignedIn && app->signIn->userEmail == "ada@sandbox.test";
    const std::string text = updates ? app->install->statusMessage() : app->signIn->errorMessage;
    check((updates ? isInstalled() : signedIn) == right, behaviour, fetch, "wrong outcome: " + text);
    check(right || !text.empty(), behaviour, fetch, "no text");
    outcomes_ += right ? "ok        " : "-         ";
    app.reset();
}

// Closes the launcher, cancels or signs out while the server misbehaves. Returns how long this takes.
milliseconds Matrix::interrupt(Fetch fetch, bool close) {
    setLongestReadTimeout(300);
    reached_ = 0;
    begin(fetch);
    (void)eventually([&] { return !isBusy() || reached_ > 0; });
    std::this_thread::sleep_for(milliseconds(50)); // so that the client is in the middle of the answer
    const auto start = steady_clock::now();
    if (close) {
        app.reset();
    } else if (fetch == Fetch::Package) {
        app->install->requestCancel();
        (void)eventually([&] { return app->install->status() >= EditorInstallStatus::Installed; });
    } else {
        fetch == Fetch::Code ? app->signIn->cancelSignIn() : app->signIn->signOut();
    }
    const auto time = std::chrono::duration_cast<milliseconds>(steady_clock::now() - start);
    app.reset();
    return time;
}

void Matrix::runFetch(const Behaviour& behaviour, Fetch fetch) {
    const ServerIdentity* identity = behaviour.tls == Tls::Foreign ? &foreign_ : &TrustedAuthority::loopback();
    const ServerIdentity none;
    const TlsServer server(behaviour.tls == Tls::No ? none : *identity, [&](TlsConnection& connection) {
        const std::string body = behaviour.tls == Tls::No ? "" : bodyFor(connection);
        ++reached_;
        behave(connection, behaviour.text, body);
    });
    direct(fetch, behaviour.text.empty() ? 1 : server.port());
#ifndef _WIN32
    std::ofstream("/proc/self/clear_refs") << 5; // resets the recorded peak of the memory
#endif
    const long atRest = resources().kib;
    finish(behaviour, fetch);
    const milliseconds close = interrupt(fetch, true);
    // "Cancel" ends a download, not the requests for manifest and statement.
    const bool cancels = fetch != Fetch::Manifest && fetch != Fetch::Statement;
    const milliseconds cancel = cancels ? interrupt(fetch, false) : milliseconds(0);
    const long kib = resources().peakKib - atRest;
    check(std::max(cancel, close) < kLongestEnd, behaviour, fetch, "cannot be ended");
    check(kib < kMostKib, behaviour, fetch, "needs too much memory");
    check(eventually([] { return unfinishedRequests() == 0; }), behaviour, fetch, "leaves a request");
    cancel_ = std::max(cancel_, cancel);
    close_ = std::max(close_, close);
    kib_ = std::max(kib_, kib);
}

bool Matrix::run(const std::string& part) {
    std::vector<Behaviour> all = behaviours();
    std::erase_if(all, [&](const Behaviour& one) { return std::string(one.name).find(part) == std::string::npos; });
    milliseconds worst{0};
    std::puts(
        "the server                          manifest  package   statement code      renewal   user info  cancel   "
        "close memory");
    for (const Behaviour& behaviour : all) {
        cancel_ = close_ = milliseconds(0);
        kib_ = 0;
        outcomes_.clear();
        for (std::size_t fetch = 0; fetch < fetchPorts.size(); ++fetch)
            runFetch(behaviour, static_cast<Fetch>(fetch));
        worst = std::max({worst, cancel_, close_});
        std::printf("%-35s %s %4d ms %4d ms %3ld MB\n", behaviour.name, outcomes_.c_str(),
                    static_cast<int>(cancel_.count()), static_cast<int>(close_.count()), kib_ >> 10);
        std::fflush(stdout);
    }
    std::printf("%zu behaviours, 6 fetches, slowest end %d ms, %d problems\n", all.size(),
                static_cast<int>(worst.count()), failures_);
    return failures_ == 0 && !all.empty();
}

} // namespace

bool runMatrix(const std::string& part) {
    return Matrix().run(part);
}
