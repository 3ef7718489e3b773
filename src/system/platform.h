#pragma once

// Small differences between the platforms, one function each. Any thread.

#include <cstdint>
#include <ctime>

// The name that the update server knows this platform by: "linux" or "windows".
[[nodiscard]] const char* platformName();

// Converts to the computer's time zone. False when the time is out of range.
[[nodiscard]] bool toLocalTime(std::time_t seconds, std::tm& local);

// Makes a write to a broken connection fail instead of ending the process. Call it once, before any connection.
void ignoreBrokenPipes();

// Keeps other programs from binding the same port. `socket` is not yet bound.
void keepPortExclusive(std::intptr_t socket);
