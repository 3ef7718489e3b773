#pragma once

// Reads a small file into memory. Any thread.

#include <string>

// Binary mode. False when the path cannot be opened or read, or is a directory.
[[nodiscard]] bool readWholeFile(const std::string& path, std::string& bytes);
