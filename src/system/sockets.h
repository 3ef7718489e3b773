#pragma once

// Operations on a socket that cpp-httplib does not offer. Sockets are numbers of the operating system. Any thread.

#include <chrono>
#include <cstddef>
#include <cstdint>

inline constexpr std::intptr_t kNoSocket = -1;

// Keeps other programs from binding the same port. Call it before the socket is bound.
void keepPortExclusive(std::intptr_t socket);

// A second number for the same socket, which the caller closes; kNoSocket on failure.
[[nodiscard]] std::intptr_t duplicateSocket(std::intptr_t socket);

// Ends the connection in both directions: threads that wait for it return. On Linux this also ends an attempt to
// connect. On Windows it has no effect before the connection is established, and a thread that starts to wait
// afterwards is not woken: call it again until the thread has returned.
void shutDownSocket(std::intptr_t socket);

void closeSocket(std::intptr_t socket);

// Both wait up to the limit until the socket is ready, and transfer what is possible at once. They return the number of
// bytes, 0 at the end of the connection, and -1 after the limit or a failure.
[[nodiscard]] std::ptrdiff_t receiveWithin(std::intptr_t socket, char* bytes, std::size_t size,
                                           std::chrono::milliseconds limit);
[[nodiscard]] std::ptrdiff_t sendWithin(std::intptr_t socket, const char* bytes, std::size_t size,
                                        std::chrono::milliseconds limit);
