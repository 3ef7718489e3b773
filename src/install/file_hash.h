#pragma once

// SHA-256 of files, as the manifest writes it. Any thread.

#include <cstddef>
#include <string>

// 64 lower-case hexadecimal digits, or empty on any failure. Reads the whole file, 256 KiB at a time.
std::string sha256OfFile(const std::string& path);

// Lower-case, high nibble first.
std::string hexEncode(const unsigned char* bytes, std::size_t count);
