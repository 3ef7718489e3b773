#include "support/tls_server.h"

#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstdlib>
#include <list>
#include <mutex>
#include <thread>

#include <httplib.h> // for the sockets, under their names on this platform
#include <openssl/pem.h>
#include <openssl/ssl.h>

using httplib::detail::close_socket;

static void shutdown_socket(socket_t socket) {
    constexpr int bothDirections = 2; // SHUT_RDWR on Linux, SD_BOTH on Windows
    ::shutdown(socket, bothDirections);
}

struct TlsConnection::State {
    TlsServer::Shared& shared;
    SSL* ssl;
    socket_t socket; // INVALID_SOCKET once closed; guarded by the server's mutex
    std::thread thread;
};

struct TlsServer::Shared {
    Script script;
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
};

void TlsServer::Shared::close(TlsConnection::State& state, bool withReset) {
    const std::lock_guard<std::mutex> lock(mutex);
    if (state.socket == INVALID_SOCKET) return;
    const linger discard{1, 0};
    if (withReset)
        setsockopt(state.socket, SOL_SOCKET, SO_LINGER, reinterpret_cast<const char*>(&discard), sizeof discard);
    close_socket(state.socket);
    state.socket = INVALID_SOCKET;
}

void TlsServer::Shared::serve(TlsConnection::State& state) {
    if (SSL_accept(state.ssl) == 1) {
        TlsConnection connection(state);
        script(connection);
        if (state.socket != INVALID_SOCKET) SSL_shutdown(state.ssl);
    }
    close(state, false);
    SSL_free(state.ssl);
}

void TlsServer::Shared::acceptLoop() {
    for (;;) {
        const socket_t socket = accept(listener, nullptr, nullptr);
        const std::lock_guard<std::mutex> lock(mutex);
        if (stopping || socket == INVALID_SOCKET) {
            if (socket != INVALID_SOCKET) close_socket(socket);
            return;
        }
        SSL* ssl = SSL_new(context);
        SSL_set_fd(ssl, static_cast<int>(socket));
        TlsConnection::State& state = connections.emplace_back(*this, ssl, socket, std::thread());
        state.thread = std::thread([this, &state] { serve(state); });
    }
}

TlsServer::TlsServer(const ServerIdentity& identity, Script script)
    : shared_(std::make_unique<Shared>()) {
#ifdef SIGPIPE
    std::signal(SIGPIPE, SIG_IGN); // writing to a client that has gone is an everyday matter here
#endif
    shared_->script = std::move(script);
    shared_->context = SSL_CTX_new(TLS_server_method());
    BIO* certificateText =
        BIO_new_mem_buf(identity.certificatePem.data(), static_cast<int>(identity.certificatePem.size()));
    BIO* keyText = BIO_new_mem_buf(identity.privateKeyPem.data(), static_cast<int>(identity.privateKeyPem.size()));
    X509* certificate = PEM_read_bio_X509(certificateText, nullptr, nullptr, nullptr);
    EVP_PKEY* key = PEM_read_bio_PrivateKey(keyText, nullptr, nullptr, nullptr);
    SSL_CTX_use_certificate(shared_->context, certificate);
    SSL_CTX_use_PrivateKey(shared_->context, key);
    X509_free(certificate);
    EVP_PKEY_free(key);
    BIO_free(certificateText);
    BIO_free(keyText);

    shared_->listener = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    if (bind(shared_->listener, reinterpret_cast<sockaddr*>(&address), size) != 0 ||
        listen(shared_->listener, 64) != 0 ||
        getsockname(shared_->listener, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
        std::abort(); // no test can go on without its server
    }
    shared_->port = ntohs(address.sin_port);
    shared_->acceptThread = std::thread([shared = shared_.get()] { shared->acceptLoop(); });
}

TlsServer::~TlsServer() {
    {
        const std::lock_guard<std::mutex> lock(shared_->mutex);
        shared_->stopping = true;
#ifdef _WIN32
        close_socket(shared_->listener); // what ends a blocked accept
#else
        shutdown_socket(shared_->listener);
#endif
        for (TlsConnection::State& state : shared_->connections) {
            if (state.socket != INVALID_SOCKET) shutdown_socket(state.socket); // ends a blocked read or write
        }
    }
    shared_->stopped.notify_all();
    shared_->acceptThread.join();
    for (TlsConnection::State& state : shared_->connections)
        state.thread.join();
#ifndef _WIN32
    close_socket(shared_->listener);
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

std::string httpAnswer(int status, const std::string& body) {
    return "HTTP/1.1 " + std::to_string(status) +
           " Told\r\nContent-Type: application/json\r\nContent-Length: " + std::to_string(body.size()) +
           "\r\nConnection: close\r\n\r\n" + body;
}
