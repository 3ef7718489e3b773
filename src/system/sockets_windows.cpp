#include "system/sockets.h"

#include <winsock2.h>

// Without this option a second socket with SO_REUSEADDR could bind the port and take its connections.
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

void shutDownSocket(std::intptr_t socket) {
    ::shutdown(static_cast<SOCKET>(socket), SD_BOTH);
}

void closeSocket(std::intptr_t socket) {
    if (socket != kNoSocket) ::closesocket(static_cast<SOCKET>(socket));
}
