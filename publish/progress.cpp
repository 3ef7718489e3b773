#include "publish/progress.h"

#include <algorithm>
#include <cstdio>

#include "publish/publish_platform.h"

namespace {

constexpr auto kQuietTime = std::chrono::seconds(1); // a shorter step shows no line
constexpr auto kInterval = std::chrono::milliseconds(200);
constexpr double kMebibyte = 1024.0 * 1024.0;

} // namespace

std::string progressText(const char* step, std::uint64_t done, std::uint64_t total, double elapsedSeconds) {
    const double share = total > 0 ? std::min(static_cast<double>(done) / static_cast<double>(total), 1.0) : 1.0;
    const double left = share > 0.0 ? elapsedSeconds * (1.0 - share) / share : 0.0;
    char text[160];
    std::snprintf(text, sizeof text, "%s: %.0f of %.0f MiB, %.0f%%, %.0f s left", step,
                  static_cast<double>(done) / kMebibyte, static_cast<double>(total) / kMebibyte, share * 100.0, left);
    return text;
}

ProgressLine::ProgressLine()
    : terminal_(stderrIsTerminal()) {}

void ProgressLine::show(const char* step, std::uint64_t done, std::uint64_t total) {
    if (!terminal_) return;
    const Clock::time_point now = Clock::now();
    if (step_ != step) {
        clear();
        step_ = step;
        began_ = now;
    }
    if (now - began_ < kQuietTime || now - shown_ < kInterval) return;
    shown_ = now;
    std::string text = progressText(step, done, total, std::chrono::duration<double>(now - began_).count());
    const std::size_t width = text.size();
    text.resize(std::max(width, width_), ' '); // spaces overwrite the rest of the previous line
    width_ = width;
    std::fprintf(stderr, "\r%s", text.c_str());
    std::fflush(stderr);
}

void ProgressLine::clear() {
    if (width_ == 0) return;
    std::fprintf(stderr, "\r%s\r", std::string(width_, ' ').c_str());
    std::fflush(stderr);
    width_ = 0;
}
