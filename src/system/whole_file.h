#pragma once

// Reads a small file into memory. Any thread.

#include <fstream>
#include <string>

// Reads a file in binary mode. False if `path` is a directory, or cannot be opened or read.
[[nodiscard]] inline bool readWholeFile(const std::string& path, std::string& bytes) {
    bytes.clear();
    std::ifstream file(path, std::ios::binary);
    char buffer[16384];
    while (file.read(buffer, sizeof buffer) || file.gcount() > 0) {
        bytes.append(buffer, static_cast<std::size_t>(file.gcount()));
    }
    return file.eof();
}
