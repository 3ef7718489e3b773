#pragma once

// Formats times as "2026-11-21 09:30" in the computer's time zone. Any thread.

#include <cstdint>
#include <string>

// Formats seconds since the Unix epoch. Empty if `seconds` is 0 or negative.
[[nodiscard]] std::string formatLocalTime(std::int64_t seconds);

// Returns the last write time of a file. Empty if it cannot be read.
[[nodiscard]] std::string fileModifiedTimeText(const std::string& path);
