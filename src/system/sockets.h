#pragma once

// Operations on a socket that cpp-httplib does not offer. Sockets are numbers of the operating system. Any thread.

#include <cstdint>

inline constexpr std::intptr_t kNoSocket = -1;

// Keeps other programs from binding the same port. Call it before the socket is bound.
void keepPortExclusive(std::intptr_t socket);

// A second number for the same socket, which the caller closes; kNoSocket on failure.
[[nodiscard]] std::intptr_t duplicateSocket(std::intptr_t socket);

// Ends the connection in both directions: threads that wait for it return. On Linux this also ends an attempt to
// connect; on Windows it has no effect before the connection is established.
void shutDownSocket(std::intptr_t socket);

void closeSocket(std::intptr_t socket);
