#include "sandbox/tls_server.h"

#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <list>
#include <mutex>
#include <thread>
#include <utility>

#include <httplib.h> // declares socket_t and includes the socket headers of the platform
#include <openssl/pem.h>
#include <openssl/ssl.h>

#include "system/sockets.h"

struct TlsConnection::State {
    TlsServer::Shared& shared;
    SSL* ssl;
    socket_t socket; // INVALID_SOCKET after it is closed; guarded by the server's mutex
    std::thread thread;
    bool hasEnded = false; // true: the thread can be joined without waiting; guarded by the server's mutex
};

struct TlsServer::Shared {
    Script script;
    bool hasCertificate = false;
    SSL_CTX* context = nullptr;
    socket_t listener = INVALID_SOCKET;
    int port = 0;
    std::thread acceptThread;

    mutable std::mutex mutex; // guards everything below
    std::condition_variable stopped;
    bool stopping = false;
    std::vector<std::string> requests;
    std::list<TlsConnection::State> connections;

    void acceptLoop();
    void serve(TlsConnection::State& state);
    void close(TlsConnection::State& state, bool withReset);
    void joinEnded();
};

void TlsServer::Shared::close(TlsConnection::State& state, bool withReset) {
    const std::lock_guard<std::mutex> lock(mutex);
    if (state.socket == INVALID_SOCKET) return;
    const linger discard{1, 0}; // makes close() send an RST
    if (withReset)
        setsockopt(state.socket, SOL_SOCKET, SO_LINGER, reinterpret_cast<const char*>(&discard), sizeof discard);
    closeSocket(static_cast<std::intptr_t>(state.socket));
    state.socket = INVALID_SOCKET;
}

void TlsServer::Shared::serve(TlsConnection::State& state) {
    if (!hasCertificate || SSL_accept(state.ssl) == 1) {
        TlsConnection connection(state);
        script(connection);
        if (state.socket != INVALID_SOCKET) SSL_shutdown(state.ssl);
    }
    close(state, false);
    SSL_free(state.ssl);
    const std::lock_guard<std::mutex> lock(mutex);
    state.hasEnded = true;
}

// Joins the threads that have ended. The caller holds the mutex.
void TlsServer::Shared::joinEnded() {
    for (TlsConnection::State& state : connections)
        if (state.hasEnded) state.thread.join();
    connections.remove_if([](const TlsConnection::State& state) { return state.hasEnded; });
}

void TlsServer::Shared::acceptLoop() {
    for (;;) {
        const socket_t socket = accept(listener, nullptr, nullptr);
        const std::lock_guard<std::mutex> lock(mutex);
        if (stopping || socket == INVALID_SOCKET) {
            if (socket != INVALID_SOCKET) closeSocket(static_cast<std::intptr_t>(socket));
            return;
        }
        joinEnded();
        SSL* ssl = SSL_new(context);
        SSL_set_fd(ssl, static_cast<int>(socket));
        TlsConnection::State& state = connections.emplace_back(TlsConnection::State{*this, ssl, socket, {}});
        state.thread = std::thread([this, &state] { serve(state); });
    }
}

namespace {

// Returns a TLS context. If the identity is invalid, every handshake fails.
SSL_CTX* newContext(const ServerIdentity& identity) {
    const auto reader = [](const std::string& pem) {
        return std::unique_ptr<BIO, decltype(&BIO_free)>(BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size())),
                                                         &BIO_free);
    };
    const std::unique_ptr<X509, decltype(&X509_free)> certificate(
        PEM_read_bio_X509(reader(identity.certificatePem).get(), nullptr, nullptr, nullptr), &X509_free);
    const std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> key(
        PEM_read_bio_PrivateKey(reader(identity.privateKeyPem).get(), nullptr, nullptr, nullptr), &EVP_PKEY_free);
    SSL_CTX* context = SSL_CTX_new(TLS_server_method());
    SSL_CTX_use_certificate(context, certificate.get());
    SSL_CTX_use_PrivateKey(context, key.get());
    return context;
}

// Binds the socket and starts to listen. Returns its port; 0 if `port` is not free.
int listenAt(socket_t listener, int port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
#ifndef _WIN32
    const int yes = 1; // so that a port can be bound again directly after its last server has ended
    setsockopt(listener, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
#endif
    const bool listens = bind(listener, reinterpret_cast<sockaddr*>(&address), size) == 0 &&
                         listen(listener, 64) == 0 &&
                         getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size) == 0;
    return listens ? ntohs(address.sin_port) : 0;
}

} // namespace

TlsServer::TlsServer(const ServerIdentity& identity, Script script, int port)
    : shared_(std::make_unique<Shared>()) {
#ifdef SIGPIPE
    // OpenSSL 3 writes without MSG_NOSIGNAL. Without this line, a write to a closed connection would end the process.
    std::signal(SIGPIPE, SIG_IGN);
#endif
    shared_->script = std::move(script);
    shared_->hasCertificate = !identity.certificatePem.empty();
    shared_->context = newContext(identity);
    shared_->listener = socket(AF_INET, SOCK_STREAM, 0);
    shared_->port = listenAt(shared_->listener, port);
    if (shared_->port > 0) shared_->acceptThread = std::thread([shared = shared_.get()] { shared->acceptLoop(); });
}

TlsServer::~TlsServer() {
    {
        const std::lock_guard<std::mutex> lock(shared_->mutex);
        shared_->stopping = true;
#ifdef _WIN32
        closeSocket(static_cast<std::intptr_t>(shared_->listener)); // shutdown() ends accept() only on Linux
#else
        shutDownSocket(static_cast<std::intptr_t>(shared_->listener));
#endif
        for (TlsConnection::State& state : shared_->connections) {
            if (state.socket != INVALID_SOCKET)
                shutDownSocket(static_cast<std::intptr_t>(state.socket)); // ends a blocked read or write
        }
    }
    shared_->stopped.notify_all();
    if (shared_->acceptThread.joinable()) shared_->acceptThread.join();
    for (TlsConnection::State& state : shared_->connections)
        state.thread.join();
#ifndef _WIN32
    closeSocket(static_cast<std::intptr_t>(shared_->listener));
#endif
    SSL_CTX_free(shared_->context);
}

int TlsServer::port() const {
    return shared_->port;
}

std::vector<std::string> TlsServer::requests() const {
    const std::lock_guard<std::mutex> lock(shared_->mutex);
    return shared_->requests;
}

std::string TlsConnection::readRequest() {
    std::string text;
    std::size_t wanted = std::string::npos;
    char buffer[4096];
    while (text.size() < wanted) {
        const int count = SSL_read(state_.ssl, buffer, sizeof buffer);
        if (count <= 0) break;
        text.append(buffer, static_cast<std::size_t>(count));
        const std::size_t headEnd = text.find("\r\n\r\n");
        if (headEnd == std::string::npos) continue;
        const std::size_t length = text.find("Content-Length: ");
        const bool hasBody = length != std::string::npos && length < headEnd;
        wanted = headEnd + 4 + (hasBody ? std::strtoul(text.c_str() + length + 16, nullptr, 10) : 0);
    }
    const std::lock_guard<std::mutex> lock(state_.shared.mutex);
    state_.shared.requests.push_back(text);
    return text;
}

bool TlsConnection::write(const std::string& bytes) {
    if (state_.socket == INVALID_SOCKET) return false;
    if (bytes.empty()) return true;
    return SSL_write(state_.ssl, bytes.data(), static_cast<int>(bytes.size())) > 0;
}

void TlsConnection::closeAbruptly() {
    state_.shared.close(state_, false);
}

void TlsConnection::reset() {
    state_.shared.close(state_, true);
}

void TlsConnection::stall() {
    while (pause(60000)) {
    }
}

bool TlsConnection::pause(int milliseconds) {
    std::unique_lock<std::mutex> lock(state_.shared.mutex);
    return !state_.shared.stopped.wait_for(lock, std::chrono::milliseconds(milliseconds),
                                           [this] { return state_.shared.stopping; });
}
