#include "system/sockets.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

// On Linux a bound port is exclusive unless both sockets ask to share it.
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
