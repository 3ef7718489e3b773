#pragma once

// Declares socket operations that cpp-httplib does not have. A socket is the operating system's descriptor or handle,
// as a number. Any thread.

#include <chrono>
#include <cstddef>
#include <cstdint>

inline constexpr std::intptr_t kNoSocket = -1;

// Prevents other programs from binding the same port. Call it before the socket is bound.
void keepPortExclusive(std::intptr_t socket);

// Returns a second descriptor for the same socket. The caller closes it. Returns kNoSocket on failure.
[[nodiscard]] std::intptr_t duplicateSocket(std::intptr_t socket);

// Shuts the connection down in both directions, so that threads that wait on the socket return. On Linux this also ends
// an attempt to connect. On Windows the call has no effect before the connection is established, and it does not wake a
// thread that starts to wait afterwards. So, on Windows, repeat the call until the thread has returned.
void shutDownSocket(std::intptr_t socket);

void closeSocket(std::intptr_t socket);

// Waits up to `limit` until data arrives. Then reads what is available, at most `size` bytes. Returns the number of
// bytes, 0 at the end of the connection, or -1 after the limit or a failure.
[[nodiscard]] std::ptrdiff_t receiveWithin(std::intptr_t socket, char* bytes, std::size_t size,
                                           std::chrono::milliseconds limit);

// Waits up to `limit` until the socket is writable. Then writes once, which may take fewer bytes than `size`. Returns
// the number of bytes written, or -1 after the limit or a failure.
[[nodiscard]] std::ptrdiff_t sendWithin(std::intptr_t socket, const char* bytes, std::size_t size,
                                        std::chrono::milliseconds limit);
