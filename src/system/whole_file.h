#pragma once

// Reads a small file into memory. Any thread.

#include <string>

// Reads a file in binary mode. False if `path` is a directory, or cannot be opened or read.
[[nodiscard]] bool readWholeFile(const std::string& path, std::string& bytes);
