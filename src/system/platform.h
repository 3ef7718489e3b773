#pragma once

// Small differences between the platforms, one function each. Any thread.

#include <cstddef>
#include <ctime>
#include <functional>

// The name that the update server knows this platform by: "linux" or "windows".
[[nodiscard]] const char* platformName();

// Converts to the computer's time zone. False when the time is out of range.
[[nodiscard]] bool toLocalTime(std::time_t seconds, std::tm& local);

// Makes a write to a broken connection fail instead of ending the process. Call it once, before any connection.
void ignoreBrokenPipes();

// Runs `work` on a new thread with a stack of this size. Nobody joins the thread. False when the system refuses it.
[[nodiscard]] bool startThread(std::size_t stackBytes, std::function<void()> work);
