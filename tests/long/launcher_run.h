#pragma once

// Runs a launcher without a window, and a server for the launcher's six requests. matrix.cpp and soak.cpp start many
// launchers in one process with it. Main thread; only the answers run on the server's threads.

#include <array>
#include <atomic>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include <httplib.h>
#ifdef _WIN32
#include <windows.h>
#include <psapi.h>
#endif

#include "install/release_statement.h"
#include "publish/statement_writer.h"
#include "support/package_making.h"
#include "support/tls_server.h"
#include "support/trusted_authority.h"
#include "support/ui_harness.h"

// Each returns true if the run found no problem, and prints what it found.
[[nodiscard]] bool runMatrix(const std::string& part); // only the behaviours whose name contains `part`
[[nodiscard]] bool runCycles(int count);
[[nodiscard]] bool runRounds(int count);

enum class Fetch : std::size_t { Manifest, Package, Statement, Code, Renewal, UserInfo };
inline std::array<std::atomic<int>, 6> fetchPorts; // the port that each request uses

class LauncherRun : public UiHarness {
  public:
    // Writes the answer to a request. `body` is the body of the right answer.
    using Answer = std::function<void(TlsConnection& connection, const std::string& body)>;

    explicit LauncherRun(Answer answer = answerWell)
        : server_(TrustedAuthority::loopback(), [this, answer = std::move(answer)](TlsConnection& connection) {
            const std::string body = bodyFor(connection);
            answer(connection, body);
        }) {
        direct(Fetch::Manifest, server_.port());
    }

    static void answerWell(TlsConnection& connection, const std::string& body) {
        connection.write(httpAnswer(200, body));
    }

    // Reads a request and returns the body of its right answer.
    [[nodiscard]] std::string bodyFor(TlsConnection& connection) const {
        const std::string path = parseHttpRequest(connection.readRequest()).path, name = versionName();
        const std::string package = makeZip({{"editor.exe", name, true}});
        if (path == "/manifest")
            return R"({"version":")" + name + R"(","url":")" + address(Fetch::Package) + R"(/package","sha256":")" +
                   sha256Hex(package) + "\"}";
        if (path == "/package") return package;
        if (path == "/token") return R"({"access_token":"access","refresh_token":"refresh"})";
        if (path == "/v1/userinfo") return R"({"name":"Ada","email":"ada@sandbox.test"})";
        return writeStatement({name, static_cast<std::int64_t>(package.size()), sha256Hex(package), "-"}, "ok",
                              kServerTime, 30, keys_);
    }

    // Directs one request to `port`, and all other requests to the server of this object.
    void direct(Fetch fetch, int port) const {
        for (std::atomic<int>& one : fetchPorts)
            one = server_.port();
        fetchPorts[static_cast<std::size_t>(fetch)] = port;
    }

    // Starts a launcher without an editor. If `withSession` is false, also starts a sign-in and allows it.
    void launch(bool withSession) {
        for (const char* left : {"editor", "downloads"})
            std::filesystem::remove_all(launcher / left);
        folder.write("launcher/here/launcher_config.json",
                     R"({"google_client_id":"client","google_client_secret":"secret","editor_update_manifest_url":")" +
                         address(Fetch::Manifest) + R"(/manifest","artifact_authenticity_url":")" +
                         address(Fetch::Statement) + R"(/statements","artifact_authenticity_keys":")" +
                         publisherKeysText({keys_[0].publicKey()}) + "\"}");
        LauncherSettings settings;
        settings.setProjects({makeProject("one", 1)});
        if (withSession) settings.setRefreshToken("refresh");
        settings.save();
        start();
        if (withSession) return;
        app->signIn->startSignIn();
        allowSignIn();
    }

    // Sends the redirect of a browser in which the user allowed the sign-in.
    static void allowSignIn() {
        const std::string url = recordingSystem().openedUrls.back();
        const std::size_t port = url.find("127.0.0.1%3A") + 12, state = url.find("&state=");
        httplib::Client("127.0.0.1", std::stoi(url.substr(port))).Get("/?code=code" + url.substr(state));
    }

    // Draws a frame. True while a sign-in or an update runs.
    bool isBusy() {
        frame();
        const EditorInstallStatus install = app->install->status();
        return (install >= EditorInstallStatus::Checking && install <= EditorInstallStatus::Installing) ||
               app->signIn->state == SignInState::SigningIn || app->signIn->state == SignInState::RestoringSession;
    }

    // True if the offered version is installed.
    [[nodiscard]] bool isInstalled() const {
        return app->install->status() == EditorInstallStatus::Installed &&
               readFileBytes(launcher / "editor/editor.exe") == versionName();
    }

    static constexpr std::int64_t kServerTime = 1000000; // the harness's clock
    std::atomic<int> version = 1;                        // of the offered release

  private:
    [[nodiscard]] std::string versionName() const { return "1." + std::to_string(version); }
    static std::string address(Fetch fetch) {
        return "https://127.0.0.1:" + std::to_string(fetchPorts[static_cast<std::size_t>(fetch)]);
    }

    TrustedAuthority trust_;
    const std::vector<PublisherKey> keys_ = publisherKeys();
    TlsServer server_;
};

// The resources that this process uses. On Windows, only the memory is measured.
struct Resources {
    long descriptors = 0, threads = 0, kib = 0, peakKib = 0;
};

inline Resources resources() {
    Resources used;
#ifdef _WIN32
    PROCESS_MEMORY_COUNTERS memory = {};
    GetProcessMemoryInfo(GetCurrentProcess(), &memory, sizeof memory);
    used.kib = static_cast<long>(memory.WorkingSetSize >> 10);
    used.peakKib = static_cast<long>(memory.PeakWorkingSetSize >> 10);
#else
    const std::filesystem::directory_iterator descriptors("/proc/self/fd");
    used.descriptors = std::distance(begin(descriptors), end(descriptors));
    std::ifstream status("/proc/self/status");
    for (std::string name; status >> name;) {
        if (name == "Threads:") status >> used.threads;
        if (name == "VmRSS:") status >> used.kib;
        if (name == "VmHWM:") status >> used.peakKib;
    }
#endif
    return used;
}
