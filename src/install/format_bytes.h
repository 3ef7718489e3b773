#pragma once

#include <cstdint>
#include <string>

// Returns a byte count as text for the user: "0 B", "1023 B", "1.5 KB". The largest unit is "GB". Any thread.
[[nodiscard]] std::string formatBytes(std::int64_t count);
