#pragma once

// Waits until another thread or process makes a condition true. False after the deadline.

#include <chrono>
#include <thread>

template<class Condition>
[[nodiscard]] bool eventually(const Condition& condition, std::chrono::seconds deadline = std::chrono::seconds(20)) {
    const auto end = std::chrono::steady_clock::now() + deadline;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}
