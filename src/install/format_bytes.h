#pragma once

#include <cstdint>
#include <string>

// A byte count for the user: "0 B", "1023 B", "1.5 KB", up to "GB". Any thread.
[[nodiscard]] std::string formatBytes(std::int64_t count);
