#pragma once

// Declares small functions that each platform implements in its own way. Any thread.

#include <cstddef>
#include <ctime>
#include <functional>

// Returns the platform's name in requests to the update server: "linux" or "windows".
[[nodiscard]] const char* platformName();

// Converts a time to the computer's time zone. False if the time is out of range.
[[nodiscard]] bool toLocalTime(std::time_t seconds, std::tm& local);

// Makes a write to a broken connection fail instead of ending the process. Call it once, before the first connection.
void ignoreBrokenPipes();

// Runs `work` on a new, detached thread with a stack of `stackBytes`. False if the system cannot create the thread.
[[nodiscard]] bool startThread(std::size_t stackBytes, std::function<void()> work);
