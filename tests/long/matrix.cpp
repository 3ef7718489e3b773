// Servers that misbehave, for each request of the launcher: what the user sees, how long "Cancel", "Sign out" and
// closing take meanwhile, and how much memory the launcher needs.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "config/launcher_settings.h"
#include "install/editor_install_state.h"
#include "install/editor_location.h"
#include "long/runs.h"
#include "long/servers.h"
#include "signin/sign_in_flow.h"
#include "support/eventually.h"
#include "support/recording_system.h"
#include "system/http.h"

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;
using Answer = LauncherServers::Answer;

constexpr milliseconds kLongestEnd{2000}; // the goal is 100 ms, which a busy machine can miss
constexpr long kMostKib = 64 * 1024;
constexpr int kDripPieces = 40;
constexpr int kDripMilliseconds = 100; // slower in all than the limit of a small answer, which is 2 s in this run

enum class Right { Never, Package, Always }; // the fetches that succeed

struct Behaviour {
    const char* name;
    Right right;
    Answer answer;                                     // none: no server listens
    enum { Valid, Foreign, None } certificate = Valid; // None: the answer starts before the handshake
};

const std::string kOk = "HTTP/1.1 200 OK\r\n";

std::string lengthLine(std::size_t length) {
    return "Content-Length: " + std::to_string(length) + "\r\n\r\n";
}

// An answer with this start, with the length of the body, and with the right body.
Answer started(const std::string& start) {
    return [start](TlsConnection& connection, const std::string& body) {
        connection.write(start + lengthLine(body.size()) + body);
    };
}

Answer withBody(const std::string& body) {
    return [body](TlsConnection& connection, const std::string&) { connection.write(httpAnswer(200, body)); };
}

// The start, then 80 MiB or what the client takes of it. A client that kept them in memory would need too much of it.
Answer endless(const std::string& start, const std::string& piece) {
    std::string block;
    while (block.size() < 16000)
        block += piece;
    return [start, block](TlsConnection& connection, const std::string&) {
        bool taken = connection.write(start);
        for (std::size_t sent = 0; taken && sent < std::size_t{80} << 20; sent += block.size())
            taken = connection.write(block);
    };
}

bool drip(TlsConnection& connection, const std::string& text) {
    const std::size_t size = text.size() / kDripPieces + 1;
    for (std::size_t at = 0; at < text.size(); at += size)
        if (!connection.write(text.substr(at, size)) || !connection.pause(kDripMilliseconds)) return false;
    return true;
}

std::vector<Behaviour> behaviours() {
    using Connection = TlsConnection;
    std::vector<Behaviour> all = {
        {"answers well", Right::Always, started(kOk)},
        {"speaks HTTP/1.0", Right::Always, started("HTTP/1.0 200 OK\r\n")},
        {"sends no length and closes", Right::Always, [](Connection& c, auto& body) { c.write(kOk + "\r\n" + body); }},
        {"refuses the connection", Right::Never, {}},
        {"resets in the handshake", Right::Never, [](Connection& c, auto&) { c.reset(); }, Behaviour::None},
        {"hangs in the handshake", Right::Never, [](Connection& c, auto&) { c.stall(); }, Behaviour::None},
        {"has another name's certificate", Right::Never, started(kOk), Behaviour::Foreign},
        {"resets after the request", Right::Never, [](Connection& c, auto&) { c.reset(); }},
        {"hangs after the request", Right::Never, [](Connection& c, auto&) { c.stall(); }},
        {"resets in the header", Right::Never, [](Connection& c, auto&) { c.write(kOk), c.reset(); }},
        {"drips the header", Right::Package,
         [](Connection& c, auto& body) { drip(c, kOk + lengthLine(body.size())) && c.write(body); }},
        {"drips status 100", Right::Package,
         [](Connection& c, auto& body) {
             for (int i = 0; i < kDripPieces; ++i)
                 if (!c.write("HTTP/1.1 100 Continue\r\n\r\n") || !c.pause(kDripMilliseconds)) return;
             c.write(httpAnswer(200, body));
         }},
        {"sends endless headers", Right::Never, endless(kOk, "X: " + std::string(1000, 'x') + "\r\n")},
        {"sends one endless header", Right::Never, endless(kOk + "X: ", std::string(1000, 'x'))},
        {"announces 10^15 bytes", Right::Never, endless(kOk + "Content-Length: 1000000000000000\r\n\r\n", "x")},
        {"sends an endless body", Right::Never, endless(kOk + "\r\n", "x")},
        {"sends endless chunks", Right::Never,
         endless(kOk + "Transfer-Encoding: chunked\r\n\r\n", "8\r\nxxxxxxxx\r\n")},
        {"cuts the body", Right::Never,
         [](Connection& c, auto& body) { c.write(kOk + lengthLine(body.size() + 1) + body); }},
        {"sends more than the length", Right::Never,
         [](Connection& c, auto& body) { c.write(kOk + lengthLine(body.size() - 2) + body); }},
        {"drips the body", Right::Package,
         [](Connection& c, auto& body) { c.write(kOk + lengthLine(body.size())) && drip(c, body); }},
        {"stalls in the body", Right::Never,
         [](Connection& c, auto& body) { c.write(kOk + lengthLine(body.size() + 1) + body), c.stall(); }},
        {"sends an empty body", Right::Never, withBody("")},
        {"sends garbage for a header", Right::Never, endless("", "\x01garbage\n\xFF")},
        {"sends zero bytes", Right::Never,
         [](Connection& c, auto& body) { c.write(httpAnswer(200, body + std::string(1000, '\0'))); }},
        {"sends broken UTF-8", Right::Never,
         [](Connection& c, auto& body) { c.write(httpAnswer(200, "\xFF\xC0" + body)); }},
        {"sends a deep body", Right::Never, withBody(std::string(kDefaultBodyLimit - 1, '['))},
        {"sends a wide body", Right::Never,
         [](Connection& c, auto&) {
             std::string zeros = "[0";
             while (zeros.size() < kDefaultBodyLimit - 2)
                 zeros += ",0";
             c.write(httpAnswer(200, zeros + "]"));
         }},
        {"compresses without being asked", Right::Never, started(kOk + "Content-Encoding: gzip\r\n")},
        {"redirects to itself", Right::Never, started("HTTP/1.1 302 Found\r\nLocation: /manifest\r\n")},
        {"redirects to http", Right::Never, started("HTTP/1.1 302 Found\r\nLocation: http://127.0.0.1/\r\n")},
    };
    for (const char* status : {"204", "206", "304", "404", "500", "503"})
        all.push_back({status, Right::Never, started(std::string("HTTP/1.1 ") + status + " Status\r\n")});
    return all;
}

// A launcher without a window that makes one fetch, and those that come before it.
class Launcher {
  public:
    Launcher(const LauncherServers& servers, Fetch fetch) {
        recordingSystem() = {};
        recordingSystem().launcherDirectory = (folder_ / "some/launcher").string();
        recordingSystem().userDataDirectory = folder_.string();
        setRecordedTime(kServerTime);
        if (fetch <= Fetch::Statement) {
            install_ = std::make_unique<EditorInstallState>(servers.manifestUrl(), (folder_ / "downloads").string(),
                                                            servers.authenticity());
            install_->startUpdate();
            return;
        }
        signIn_ = std::make_unique<SignInFlow>("client", "secret", &settings_);
        if (fetch == Fetch::Code) {
            signIn_->startSignIn();
            allowSignIn(recordingSystem().openedUrls.back());
        } else {
            settings_.setRefreshToken("refresh");
            signIn_->restoreSession();
        }
    }

    bool isBusy() {
        if (install_)
            return install_->status() >= EditorInstallStatus::Checking &&
                   install_->status() <= EditorInstallStatus::Installing;
        signIn_->pollSignIn();
        return signIn_->state == SignInState::SigningIn || signIn_->state == SignInState::RestoringSession;
    }

    // Empty: succeeded.
    std::string failure() {
        if (signIn_) return signIn_->state == SignInState::SignedIn ? "" : signIn_->errorMessage;
        return install_->status() == EditorInstallStatus::Installed ? "" : install_->statusMessage();
    }

    bool isComplete() const {
        if (signIn_) return signIn_->userEmail == kUserEmail && settings_.refreshToken() == "refresh";
        return readFileBytes(findManagedEditor()) == "1.1";
    }

    void cancel(Fetch fetch) {
        if (fetch == Fetch::Package) {
            install_->requestCancel();
            while (isBusy())
                std::this_thread::sleep_for(milliseconds(1));
        } else {
            fetch == Fetch::Code ? signIn_->cancelSignIn() : signIn_->signOut();
        }
    }
    void close() {
        install_.reset();
        signIn_.reset();
    }

  private:
    TemporaryFolder folder_;
    LauncherSettings settings_;
    std::unique_ptr<EditorInstallState> install_;
    std::unique_ptr<SignInFlow> signIn_;
};

class Matrix {
  public:
    bool run();

  private:
    struct Row {
        milliseconds cancel{0}, close{0};
        long kib = 0;
        std::string outcomes;
    };
    void runFetch(const Behaviour& behaviour, Fetch fetch, Row& row);
    void finish(const Behaviour& behaviour, Fetch fetch, Row& row);
    milliseconds interrupt(Fetch fetch, bool close);
    void fail(const Behaviour& behaviour, Fetch fetch, const std::string& what);

    LauncherServers servers_;
    const ServerIdentity foreign_ = TrustedAuthority::authority().issue({{"other.example"}, {"127.0.0.2"}, ""});
    std::atomic<int> reached_ = 0; // connections of the fetch under test
    int failures_ = 0;
};

void Matrix::fail(const Behaviour& behaviour, Fetch fetch, const std::string& what) {
    std::printf("FAIL %s, %s: %s\n", behaviour.name, kFetchNames[static_cast<std::size_t>(fetch)], what.c_str());
    ++failures_;
}

// Lets the launcher meet the server until it succeeds or fails by itself.
void Matrix::finish(const Behaviour& behaviour, Fetch fetch, Row& row) {
    setLongestReadTimeout(1);
    Launcher launcher(servers_, fetch);
    if (!eventually([&] { return !launcher.isBusy(); }, std::chrono::seconds(120))) fail(behaviour, fetch, "no end");
    const std::string failure = launcher.failure();
    const bool expected =
        behaviour.right == Right::Always || (behaviour.right == Right::Package && fetch == Fetch::Package);
    if (failure.empty() != expected) fail(behaviour, fetch, expected ? failure : "succeeds, or fails without a text");
    if (expected && !launcher.isComplete()) fail(behaviour, fetch, "succeeds with another content");
    row.outcomes += failure.empty() ? "ok        " : "-         ";
}

// Ends the fetch while the server behaves so. Returns how long the end takes.
milliseconds Matrix::interrupt(Fetch fetch, bool close) {
    setLongestReadTimeout(300);
    reached_ = 0;
    Launcher launcher(servers_, fetch);
    (void)eventually([&] { return reached_ > 0 || !launcher.isBusy(); });
    std::this_thread::sleep_for(milliseconds(50)); // so that the client waits inside the answer
    const auto start = steady_clock::now();
    close ? launcher.close() : launcher.cancel(fetch);
    return std::chrono::duration_cast<milliseconds>(steady_clock::now() - start);
}

void Matrix::runFetch(const Behaviour& behaviour, Fetch fetch, Row& row) {
    const ServerIdentity none;
    const ServerIdentity& identity = behaviour.certificate == Behaviour::Valid     ? TrustedAuthority::loopback()
                                     : behaviour.certificate == Behaviour::Foreign ? foreign_
                                                                                   : none;
    const TlsServer server(identity, [&](TlsConnection& connection) {
        const std::string body =
            behaviour.certificate == Behaviour::None ? std::string() : servers_.bodyFor(connection);
        ++reached_;
        behaviour.answer(connection, body);
    });
    servers_.redirect(fetch, behaviour.answer ? server.port() : 1);
    forgetPeak();
    const long atRest = resources().kib;
    finish(behaviour, fetch, row);
    const milliseconds close = interrupt(fetch, true);
    // "Cancel" ends a download, not the requests for manifest and statement.
    const bool cancels = fetch != Fetch::Manifest && fetch != Fetch::Statement;
    const milliseconds cancel = cancels ? interrupt(fetch, false) : milliseconds(0);
    const long kib = resources().peakKib - atRest;
    if (std::max(cancel, close) > kLongestEnd) fail(behaviour, fetch, "cannot be ended");
    if (kib > kMostKib) fail(behaviour, fetch, "needs too much memory");
    if (!eventually([] { return unfinishedRequests() == 0; })) fail(behaviour, fetch, "leaves a request");
    row = {std::max(row.cancel, cancel), std::max(row.close, close), std::max(row.kib, kib), row.outcomes};
}

bool Matrix::run() {
    const std::vector<Behaviour> all = behaviours();
    milliseconds worst{0};
    std::printf("the server %33s %-9s %-9s %-9s %-9s %-9s  cancel   close memory\n", kFetchNames[0], kFetchNames[1],
                kFetchNames[2], kFetchNames[3], kFetchNames[4], kFetchNames[5]);
    for (const Behaviour& behaviour : all) {
        Row row;
        for (std::size_t fetch = 0; fetch < kFetchNames.size(); ++fetch)
            runFetch(behaviour, static_cast<Fetch>(fetch), row);
        worst = std::max({worst, row.cancel, row.close});
        std::printf("%-35s %s %4d ms %4d ms %3ld MB\n", behaviour.name, row.outcomes.c_str(),
                    static_cast<int>(row.cancel.count()), static_cast<int>(row.close.count()), row.kib >> 10);
        std::fflush(stdout);
    }
    std::printf("%zu behaviours, %zu fetches, slowest end %d ms, %d problems\n", all.size(), kFetchNames.size(),
                static_cast<int>(worst.count()), failures_);
    return failures_ == 0;
}

} // namespace

bool runMatrix() {
    return Matrix().run();
}
