#include "system/sockets.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

// Does nothing: on Linux a bound port is exclusive unless both sockets set an option to share it.
void keepPortExclusive(std::intptr_t /*socket*/) {}

std::intptr_t duplicateSocket(std::intptr_t socket) {
    return ::fcntl(static_cast<int>(socket), F_DUPFD_CLOEXEC, 0);
}

void shutDownSocket(std::intptr_t socket) {
    ::shutdown(static_cast<int>(socket), SHUT_RDWR);
}

void closeSocket(std::intptr_t socket) {
    if (socket != kNoSocket) ::close(static_cast<int>(socket));
}

static bool isReady(std::intptr_t socket, short events, std::chrono::milliseconds limit) {
    pollfd waited{static_cast<int>(socket), events, 0};
    return ::poll(&waited, 1, static_cast<int>(limit.count())) > 0;
}

std::ptrdiff_t receiveWithin(std::intptr_t socket, char* bytes, std::size_t size, std::chrono::milliseconds limit) {
    return isReady(socket, POLLIN, limit) ? ::recv(static_cast<int>(socket), bytes, size, 0) : -1;
}

std::ptrdiff_t sendWithin(std::intptr_t socket, const char* bytes, std::size_t size, std::chrono::milliseconds limit) {
    constexpr int flags = MSG_NOSIGNAL | MSG_DONTWAIT;
    return isReady(socket, POLLOUT, limit) ? ::send(static_cast<int>(socket), bytes, size, flags) : -1;
}
