#pragma once

#include <cstdint>
#include <string>

// A byte count for people: "0 B", "1023 B", "1.5 KB", up to "GB".
std::string formatBytes(std::int64_t count);
