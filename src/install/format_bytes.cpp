#include "install/format_bytes.h"

#include <cstdio>

std::string formatBytes(std::int64_t count) {
    if (count <= 0) return "0 B";
    if (count < 1024) return std::to_string(count) + " B";
    constexpr const char* units[] = {"KB", "MB", "GB"};
    double value = static_cast<double>(count) / 1024.0;
    int unit = 0;
    for (; unit < 2 && value >= 1024.0; ++unit)
        value /= 1024.0;
    char text[32];
    std::snprintf(text, sizeof text, "%.1f %s", value, units[unit]);
    return text;
}
