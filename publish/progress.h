#pragma once

// Reports the progress of long steps and shows it as a line on the terminal.

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>

// A callback for the progress of a step: its name, the bytes done so far, and the total bytes. It is called often, on
// the thread that does the work. It may be empty.
using Progress = std::function<void(const char* step, std::uint64_t done, std::uint64_t total)>;

// Returns a text such as "writing the package: 512 of 2048 MiB, 25%, 30 s left".
[[nodiscard]] std::string progressText(const char* step, std::uint64_t done, std::uint64_t total,
                                       double elapsedSeconds);

// Shows a line for each step that takes longer than a second, if standard error is a terminal. Use it on one thread
// only.
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
    std::size_t width_ = 0; // width of the line on the terminal
};
