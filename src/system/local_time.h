#pragma once

// Formats times as "2026-11-21 09:30" in the computer's time zone. Any thread.

#include <cstdint>
#include <string>

// Seconds since the Unix epoch; 0 and negative values give the empty text.
[[nodiscard]] std::string formatLocalTime(std::int64_t seconds);

// The last write time of a file; empty when it cannot be read.
[[nodiscard]] std::string fileModifiedTimeText(const std::string& path);
