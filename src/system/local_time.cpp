#include "system/local_time.h"

#include <chrono>
#include <ctime>
#include <filesystem>

#include "system/platform.h"

std::string formatLocalTime(std::int64_t seconds) {
    if (seconds <= 0) return {};
    std::tm local{};
    if (!toLocalTime(static_cast<std::time_t>(seconds), local)) return {};
    char text[32];
    return {text, std::strftime(text, sizeof text, "%Y-%m-%d %H:%M", &local)};
}

std::string fileModifiedTimeText(const std::string& path) {
    std::error_code error;
    const std::filesystem::file_time_type written = std::filesystem::last_write_time(path, error);
    if (error) return {};
    const auto sinceEpoch = std::chrono::file_clock::to_sys(written).time_since_epoch();
    return formatLocalTime(std::chrono::duration_cast<std::chrono::seconds>(sinceEpoch).count());
}
