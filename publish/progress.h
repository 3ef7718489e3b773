#pragma once

// Progress of long steps: what reports it, and the line on a terminal that shows it.

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>

// Called often, on the thread that works, with a name of the step and the bytes done so far. May be empty.
using Progress = std::function<void(const char* step, std::uint64_t done, std::uint64_t total)>;

// "writing the package: 512 of 2048 MiB, 25%, 30 s left"
[[nodiscard]] std::string progressText(const char* step, std::uint64_t done, std::uint64_t total,
                                       double elapsedSeconds);

// Shows one line for a step that takes longer than a second, when standard error is a terminal. One thread.
class ProgressLine {
  public:
    ProgressLine();
    ~ProgressLine() { clear(); }
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

    void show(const char* step, std::uint64_t done, std::uint64_t total);
    void clear();

  private:
    using Clock = std::chrono::steady_clock;
    const bool terminal_;
    std::string step_;
    Clock::time_point began_;
    Clock::time_point shown_;
    std::size_t width_ = 0; // of the line that is on the terminal
};
