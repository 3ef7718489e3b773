#include "sandbox/update_server.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <fstream>
#include <mutex>

#include "sandbox/https_server.h"

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kChunk = 64 * 1024;

struct ServedFile {
    std::ifstream& stream;
    std::size_t size;
};

std::size_t atMost(std::size_t size, std::int64_t limit) {
    return limit < 0 ? size : std::min(size, static_cast<std::size_t>(limit));
}

bool isHeld(const UpdateServerFaults& with, const char* what) {
    std::error_code ignored;
    return !with.holdFolder.empty() && fs::exists(fs::path(with.holdFolder) / what, ignored);
}

} // namespace

struct UpdateServer::Service {
    Service(const ServerIdentity& identity, std::string servedDirectory);
    ~Service();

    void answer(const httplib::Request& request, httplib::Response& response);
    bool sendPiece(const ServedFile& file, std::size_t offset, const UpdateServerFaults& with, httplib::DataSink& sink);
    bool waitMilliseconds(std::int64_t milliseconds); // false: the server stops
    bool waitWhileHeld(const UpdateServerFaults& with, const fs::path& name);

    const fs::path directory;
    LoopbackHttpsServer server;
    int port = 0;

    std::mutex mutex; // guards everything below
    std::condition_variable stopping;
    bool isStopping = false;
    UpdateServerFaults faults;
    std::vector<std::string> events;
};

UpdateServer::Service::Service(const ServerIdentity& identity, std::string servedDirectory)
    : directory(std::move(servedDirectory))
    , server(identity) {
    server.handlers().Get("/.*", [this](const httplib::Request& request, httplib::Response& response) {
        answer(request, response);
        const std::lock_guard<std::mutex> lock(mutex);
        events.push_back(std::to_string(response.status) + " " + request.path);
    });
}

UpdateServer::Service::~Service() {
    {
        const std::lock_guard<std::mutex> lock(mutex);
        isStopping = true;
    }
    stopping.notify_all();
    server.stop();
}

bool UpdateServer::Service::waitMilliseconds(std::int64_t milliseconds) {
    std::unique_lock<std::mutex> lock(mutex);
    return !stopping.wait_for(lock, std::chrono::milliseconds(milliseconds), [this] { return isStopping; });
}

// Small files are held whole.
bool UpdateServer::Service::waitWhileHeld(const UpdateServerFaults& with, const fs::path& name) {
    const char* what = name == "manifest.json" ? "manifest" : name.extension() == ".txt" ? "statement" : nullptr;
    while (what && isHeld(with, what)) {
        if (!waitMilliseconds(50)) return false;
    }
    return true;
}

void UpdateServer::Service::answer(const httplib::Request& request, httplib::Response& response) {
    UpdateServerFaults with;
    {
        const std::lock_guard<std::mutex> lock(mutex);
        with = faults;
    }
    const fs::path name = fs::path(request.path).filename();
    const auto status = with.status.find(name.string());
    const fs::path path = directory / fs::path(request.path).relative_path();
    std::error_code error;
    const auto size = static_cast<std::size_t>(fs::file_size(path, error));
    const bool isBelow = request.path.find("..") == std::string::npos;
    response.status = status != with.status.end() ? status->second : error || !isBelow ? 404 : 200;
    if (response.status != 200) {
        if (response.status / 100 == 3) response.set_header("Location", "/elsewhere/" + name.string());
        response.set_content("no such release\n", "text/plain");
        return;
    }
    if (!waitWhileHeld(with, name)) return;
    if (!name.string().ends_with(with.suffix)) with = {};
    if (with.delayMilliseconds > 0 && !waitMilliseconds(with.delayMilliseconds)) return;
    const auto file = std::make_shared<std::ifstream>(path, std::ios::binary);
    response.set_content_provider(size, name.extension() == ".json" ? "application/json" : "application/octet-stream",
                                  [this, file, size, with](std::size_t offset, std::size_t, httplib::DataSink& sink) {
                                      return sendPiece({*file, size}, offset, with, sink);
                                  });
}

// False ends the connection, whatever length was promised.
bool UpdateServer::Service::sendPiece(const ServedFile& file, std::size_t offset, const UpdateServerFaults& with,
                                      httplib::DataSink& sink) {
    const auto position = static_cast<std::int64_t>(offset);
    if (with.closeAfter >= 0 && position >= with.closeAfter) return false;
    if (with.stallAfter >= 0 && position >= with.stallAfter) {
        while (waitMilliseconds(1000) && sink.is_writable()) {
        }
        return false;
    }
    std::size_t want = with.kibPerSecond > 0 ? static_cast<std::size_t>(with.kibPerSecond) * 1024 / 10 : kChunk;
    if (with.closeAfter >= 0) want = atMost(want, with.closeAfter - position);
    if (with.stallAfter >= 0) want = atMost(want, with.stallAfter - position);

    // A held package comes in drops after its first half.
    const auto end = static_cast<std::int64_t>(file.size);
    const bool held = isHeld(with, "package");
    if (held) want = position < end / 2 ? atMost(want, end / 2 - position) : 1;

    std::string bytes(std::max<std::size_t>(want, 1), '\0');
    file.stream.seekg(position);
    file.stream.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    const std::int64_t got = file.stream.gcount();
    file.stream.clear(); // the last piece ends at the end of the file
    if (got <= 0) return false;
    if (with.corruptAt >= position && with.corruptAt < position + got) {
        char& damaged = bytes[static_cast<std::size_t>(with.corruptAt - position)];
        damaged = static_cast<char>(~damaged);
    }
    if (!sink.write(bytes.data(), static_cast<std::size_t>(got))) return false;
    const bool pauses = with.kibPerSecond > 0 || (held && position >= end / 2);
    return !pauses || waitMilliseconds(100);
}

UpdateServer::UpdateServer(const CertificateAuthority& authority, std::string directory)
    : service_(std::make_unique<Service>(
          authority.issue({.dnsNames = {"localhost"}, .ipAddresses = {"127.0.0.1"}, .commonName = "localhost"}),
          std::move(directory))) {
    service_->port = service_->server.start();
}

UpdateServer::~UpdateServer() = default;

int UpdateServer::port() const {
    return service_->port;
}

std::string UpdateServer::baseUrl() const {
    return "https://127.0.0.1:" + std::to_string(service_->port);
}

void UpdateServer::setFaults(const UpdateServerFaults& faults) {
    const std::lock_guard<std::mutex> lock(service_->mutex);
    service_->faults = faults;
}

std::vector<std::string> UpdateServer::events() const {
    const std::lock_guard<std::mutex> lock(service_->mutex);
    return service_->events;
}
