#pragma once

// Names for what Windows and POSIX call differently. Any thread.

#include <httplib.h> // declares socket_t and includes the socket headers of the platform

inline void closeSocket(socket_t socket) {
#ifdef _WIN32
    ::closesocket(socket);
#else
    ::close(socket);
#endif
}

// Ends reads and writes that block on the socket in other threads.
inline void shutDownSocket(socket_t socket) {
#ifdef _WIN32
    ::shutdown(socket, SD_BOTH);
#else
    ::shutdown(socket, SHUT_RDWR);
#endif
}
