#include "sandbox/https_server.h"

#include <openssl/pem.h>

LoopbackHttpsServer::LoopbackHttpsServer(const ServerIdentity& identity) {
    const auto reader = [](const std::string& pem) {
        return std::unique_ptr<BIO, decltype(&BIO_free)>(BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size())),
                                                         BIO_free);
    };
    const std::unique_ptr<X509, decltype(&X509_free)> certificate(
        PEM_read_bio_X509(reader(identity.certificatePem).get(), nullptr, nullptr, nullptr), X509_free);
    const std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> key(
        PEM_read_bio_PrivateKey(reader(identity.privateKeyPem).get(), nullptr, nullptr, nullptr), EVP_PKEY_free);
    server_ = std::make_unique<httplib::SSLServer>(certificate.get(), key.get());
    server_->set_keep_alive_max_count(1);
    server_->set_read_timeout(2, 0); // a browser's spare connection must not hold up the end of the sandbox
    server_->set_socket_options([]([[maybe_unused]] socket_t socket) {
#ifndef _WIN32
        const int yes = 1; // a fixed port can be had again at once
        setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
#endif
    });
}

LoopbackHttpsServer::~LoopbackHttpsServer() {
    stop();
}

int LoopbackHttpsServer::start(int port) {
    if (port == 0) {
        port = server_->bind_to_any_port("127.0.0.1");
    } else if (!server_->bind_to_port("127.0.0.1", port)) {
        port = -1;
    }
    if (port > 0) acceptThread_ = std::thread([this] { server_->listen_after_bind(); });
    return port;
}

void LoopbackHttpsServer::stop() {
    if (!acceptThread_.joinable()) return;
    server_->wait_until_ready(); // before its loop runs, the library ignores a stop
    server_->stop();
    acceptThread_.join();
}
