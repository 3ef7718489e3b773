#include "sandbox/update_server.h"

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <system_error>
#include <utility>

#include "sandbox/http_message.h"
#include "sandbox/tls_server.h"

namespace {

namespace fs = std::filesystem;

constexpr std::int64_t kChunk = 65536;

bool isHeld(const UpdateServerFaults& with, const char* what) {
    std::error_code ignored;
    return !with.holdFolder.empty() && fs::exists(fs::path(with.holdFolder) / what, ignored);
}

// Waits while a hold file delays the manifest or the statement. False if the server is being destroyed.
bool waitWhileHeld(TlsConnection& connection, const UpdateServerFaults& with, const fs::path& name) {
    const char* what = name == "manifest.json" ? "manifest" : name.extension() == ".txt" ? "statement" : nullptr;
    while (what && isHeld(with, what))
        if (!connection.pause(50)) return false;
    return true;
}

} // namespace

struct UpdateServer::Service {
    Service(const ServerIdentity& identity, std::string servedDirectory);

    void answer(TlsConnection& connection);
    void send(TlsConnection& connection, std::ifstream& file, std::int64_t size, const UpdateServerFaults& with);

    const fs::path directory;

    std::mutex mutex; // guards everything below except the server
    UpdateServerFaults faults;
    std::vector<std::string> events;

    TlsServer server; // the last member, so that its threads end before the other members are destroyed
};

UpdateServer::Service::Service(const ServerIdentity& identity, std::string servedDirectory)
    : directory(std::move(servedDirectory))
    , server(identity, [this](TlsConnection& connection) { answer(connection); }) {}

void UpdateServer::Service::answer(TlsConnection& connection) {
    const HttpRequest request = parseHttpRequest(connection.readRequest());
    if (request.method.empty()) return;
    std::unique_lock<std::mutex> lock(mutex);
    UpdateServerFaults with = faults;
    lock.unlock();
    const fs::path name = fs::path(request.path).filename();
    const fs::path path = directory / fs::path(request.path).relative_path();
    const auto fault = with.status.find(name.string());
    std::error_code error;
    const auto size = static_cast<std::int64_t>(fs::file_size(path, error));
    const bool isBelow = request.path.find("..") == std::string::npos;
    const int status = fault != with.status.end() ? fault->second : error || !isBelow ? 404 : 200;
    if (status == 200 && !waitWhileHeld(connection, with, name)) return;
    if (!name.string().ends_with(with.suffix)) with = {};
    if (status == 200 && with.delayMilliseconds > 0 && !connection.pause(with.delayMilliseconds)) return;
    lock.lock();
    events.push_back(std::to_string(status) + " " + request.path);
    lock.unlock();
    if (status != 200) {
        const std::string location = status / 100 == 3 ? "Location: /elsewhere/" + name.string() + "\r\n" : "";
        connection.write(httpAnswer(status, "no such release\n", "text/plain", location));
        return;
    }
    const std::string type = name.extension() == ".json" ? "application/json" : "application/octet-stream";
    std::ifstream file(path, std::ios::binary);
    if (connection.write(httpHead(200, static_cast<std::size_t>(size), type))) send(connection, file, size, with);
}

// Sends the body. A fault can end the body before all bytes of the Content-Length are sent.
void UpdateServer::Service::send(TlsConnection& connection, std::ifstream& file, std::int64_t size,
                                 const UpdateServerFaults& with) {
    for (std::int64_t position = 0; position < size;) {
        if (with.closeAfter >= 0 && position >= with.closeAfter) return;
        if (with.stallAfter >= 0 && position >= with.stallAfter) return connection.stall();
        std::int64_t want = with.kibPerSecond > 0 ? std::int64_t{with.kibPerSecond} * 1024 / 10 : kChunk;
        if (with.closeAfter >= 0) want = std::min(want, with.closeAfter - position);
        if (with.stallAfter >= 0) want = std::min(want, with.stallAfter - position);
        const bool held = isHeld(with, "package"); // if true, the second half is sent byte by byte
        if (held) want = position < size / 2 ? std::min(want, size / 2 - position) : 1;

        std::string bytes(static_cast<std::size_t>(std::max<std::int64_t>(want, 1)), '\0');
        file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        bytes.resize(static_cast<std::size_t>(file.gcount()));
        const auto end = position + static_cast<std::int64_t>(bytes.size());
        if (with.corruptAt >= position && with.corruptAt < end) {
            char& damaged = bytes[static_cast<std::size_t>(with.corruptAt - position)];
            damaged = static_cast<char>(~damaged);
        }
        const bool pauses = with.kibPerSecond > 0 || (held && position >= size / 2);
        if (bytes.empty() || !connection.write(bytes) || (pauses && !connection.pause(100))) return;
        position = end;
    }
}

UpdateServer::UpdateServer(const CertificateAuthority& authority, std::string directory)
    : service_(std::make_unique<Service>(
          authority.issue({.dnsNames = {"localhost"}, .ipAddresses = {"127.0.0.1"}, .commonName = "localhost"}),
          std::move(directory))) {}

UpdateServer::~UpdateServer() = default;

int UpdateServer::port() const {
    return service_->server.port();
}

std::string UpdateServer::baseUrl() const {
    return "https://127.0.0.1:" + std::to_string(port());
}

void UpdateServer::setFaults(const UpdateServerFaults& faults) {
    const std::lock_guard<std::mutex> lock(service_->mutex);
    service_->faults = faults;
}

std::vector<std::string> UpdateServer::events() const {
    const std::lock_guard<std::mutex> lock(service_->mutex);
    return service_->events;
}
