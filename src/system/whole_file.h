#pragma once

#include <string>

// Reads a small file into memory, bytes as they stand. False when it cannot be opened or read; a directory in its place
// is such a case, which the library's stream iterators would answer with an exception. Any thread.
[[nodiscard]] bool readWholeFile(const std::string& path, std::string& bytes);
