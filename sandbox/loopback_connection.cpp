#include "sandbox/loopback_connection.h"

#include <cstdint>

#include <httplib.h> // declares socket_t and includes the socket headers of the platform

#include "system/sockets.h"

LoopbackConnection::LoopbackConnection(int port)
    : socket_(static_cast<std::intptr_t>(::socket(AF_INET, SOCK_STREAM, 0))) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    isOpen_ = ::connect(static_cast<socket_t>(socket_), reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
}

LoopbackConnection::~LoopbackConnection() {
    closeSocket(socket_);
}

void LoopbackConnection::send(const std::string& bytes) {
#ifdef _WIN32
    (void)::send(static_cast<socket_t>(socket_), bytes.data(), static_cast<int>(bytes.size()), 0);
#else
    (void)::send(static_cast<socket_t>(socket_), bytes.data(), bytes.size(), MSG_NOSIGNAL);
#endif
}
