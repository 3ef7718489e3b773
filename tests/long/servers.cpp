#include "long/servers.h"

#include <filesystem>
#include <fstream>
#include <utility>

#include <httplib.h>
#ifdef _WIN32
#include <windows.h>
#include <psapi.h>
#endif

#include "install/release_statement.h"
#include "publish/statement_writer.h"
#include "signin/google_endpoints.h"
#include "support/package_making.h"

static std::atomic<int> tokenPort = 0;
static std::atomic<int> userInfoPort = 0;

GoogleEndpoints googleEndpoints() {
    return {"https://127.0.0.1/auth", "127.0.0.1", tokenPort, "127.0.0.1", userInfoPort};
}

LauncherServers::LauncherServers(Answer answer)
    : keys_(publisherKeys())
    , server_(TrustedAuthority::loopback(), [this, answer = std::move(answer)](TlsConnection& connection) {
        const std::string body = bodyFor(connection);
        answer(connection, body);
    }) {
    redirect(Fetch::Manifest, port());
}

void LauncherServers::answerWell(TlsConnection& connection, const std::string& body) {
    connection.write(httpAnswer(200, body));
}

std::string LauncherServers::bodyFor(TlsConnection& connection) const {
    const std::string path = parseHttpRequest(connection.readRequest()).path;
    const std::string name = "1." + std::to_string(version);
    const std::string package = makeZip({{"editor.exe", name, true}, {"data/model.bin", std::string(1000, 'm')}});
    if (path == "/manifest")
        return R"({"version":")" + name + R"(","url":")" + address(Fetch::Package) + R"(/package","sha256":")" +
               sha256Hex(package) + "\"}";
    if (path == "/package") return package;
    if (path == "/token") return R"({"access_token":"access","refresh_token":"refresh"})";
    if (path == "/v1/userinfo") return std::string(R"({"name":"Ada","email":")") + kUserEmail + "\"}";
    const PackageIdentity identity = {name, static_cast<std::int64_t>(package.size()), sha256Hex(package),
                                      std::string(statement::kNoPlaintext)};
    return writeStatement(identity, "ok", kServerTime, 30, keys_);
}

std::string LauncherServers::address(Fetch fetch) const {
    return "https://127.0.0.1:" + std::to_string(ports_[static_cast<std::size_t>(fetch)]);
}

std::string LauncherServers::manifestUrl() const {
    return address(Fetch::Manifest) + "/manifest";
}

ArtifactAuthenticity LauncherServers::authenticity() const {
    return {address(Fetch::Statement) + "/statements", publisherKeysText({keys_[0].publicKey()})};
}

void LauncherServers::redirect(Fetch fetch, int otherPort) {
    for (std::atomic<int>& one : ports_)
        one = port();
    ports_[static_cast<std::size_t>(fetch)] = otherPort;
    tokenPort = fetch == Fetch::Code || fetch == Fetch::Renewal ? otherPort : port();
    userInfoPort = fetch == Fetch::UserInfo ? otherPort : port();
}

void allowSignIn(const std::string& authorizationUrl) {
    const auto parameter = [&](const std::string& name) {
        const std::size_t start = authorizationUrl.find("&" + name + "=") + name.size() + 2;
        return authorizationUrl.substr(start, authorizationUrl.find('&', start) - start);
    };
    const std::string listener = parameter("redirect_uri"); // http%3A%2F%2F127.0.0.1%3A<port>
    httplib::Client browser("127.0.0.1", std::stoi(listener.substr(listener.rfind("%3A") + 3)));
    browser.Get("/?code=code&state=" + parameter("state"));
}

#ifdef _WIN32

Resources resources() {
    PROCESS_MEMORY_COUNTERS memory = {};
    GetProcessMemoryInfo(GetCurrentProcess(), &memory, sizeof memory);
    DWORD handles = 0;
    GetProcessHandleCount(GetCurrentProcess(), &handles);
    return {static_cast<long>(handles), 0, static_cast<long>(memory.WorkingSetSize >> 10),
            static_cast<long>(memory.PeakWorkingSetSize >> 10)};
}

void forgetPeak() {}

#else

Resources resources() {
    Resources used;
    for ([[maybe_unused]] const auto& descriptor : std::filesystem::directory_iterator("/proc/self/fd"))
        ++used.descriptors;
    std::ifstream status("/proc/self/status");
    for (std::string name; status >> name;) {
        if (name == "Threads:") status >> used.threads;
        if (name == "VmRSS:") status >> used.kib;
        if (name == "VmHWM:") status >> used.peakKib;
    }
    return used;
}

void forgetPeak() {
    std::ofstream("/proc/self/clear_refs") << 5;
}

#endif
