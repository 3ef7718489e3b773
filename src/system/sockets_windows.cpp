#include "system/sockets.h"

#include <algorithm>
#include <climits>

#include <winsock2.h>

// Sets SO_EXCLUSIVEADDRUSE. Without it, another socket with SO_REUSEADDR could bind the port and receive its
// connections.
void keepPortExclusive(std::intptr_t socket) {
    const BOOL yes = TRUE;
    ::setsockopt(static_cast<SOCKET>(socket), SOL_SOCKET, SO_EXCLUSIVEADDRUSE, reinterpret_cast<const char*>(&yes),
                 sizeof yes);
}

std::intptr_t duplicateSocket(std::intptr_t socket) {
    WSAPROTOCOL_INFOW info{};
    if (::WSADuplicateSocketW(static_cast<SOCKET>(socket), ::GetCurrentProcessId(), &info) != 0) return kNoSocket;
    return static_cast<std::intptr_t>(::WSASocketW(info.iAddressFamily, info.iSocketType, info.iProtocol, &info, 0,
                                                   WSA_FLAG_OVERLAPPED | WSA_FLAG_NO_HANDLE_INHERIT));
}

// Calls CancelIoEx in addition to shutdown(). With shutdown() alone, a thread stays in WSAPoll() or recv() until the
// peer sends data or closes the connection (seen in Wine 8).
void shutDownSocket(std::intptr_t socket) {
    ::shutdown(static_cast<SOCKET>(socket), SD_BOTH);
    ::CancelIoEx(reinterpret_cast<HANDLE>(socket), nullptr);
}

void closeSocket(std::intptr_t socket) {
    if (socket != kNoSocket) ::closesocket(static_cast<SOCKET>(socket));
}

static bool isReady(std::intptr_t socket, short events, std::chrono::milliseconds limit) {
    WSAPOLLFD waited{static_cast<SOCKET>(socket), events, 0};
    return ::WSAPoll(&waited, 1, static_cast<int>(limit.count())) > 0;
}

static int intSize(std::size_t size) {
    return static_cast<int>(std::min<std::size_t>(size, INT_MAX));
}

std::ptrdiff_t receiveWithin(std::intptr_t socket, char* bytes, std::size_t size, std::chrono::milliseconds limit) {
    return isReady(socket, POLLRDNORM, limit) ? ::recv(static_cast<SOCKET>(socket), bytes, intSize(size), 0) : -1;
}

// send() blocks if the send buffer becomes full, but not for long: cpp-httplib sets a time-out for send() on each
// accepted socket.
std::ptrdiff_t sendWithin(std::intptr_t socket, const char* bytes, std::size_t size, std::chrono::milliseconds limit) {
    return isReady(socket, POLLWRNORM, limit) ? ::send(static_cast<SOCKET>(socket), bytes, intSize(size), 0) : -1;
}
