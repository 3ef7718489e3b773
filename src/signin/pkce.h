#pragma once

// The small codecs of a browser sign-in: random tokens, the S256 challenge of RFC 7636, URL encodings. Any thread.

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// `byteCount` random bytes as URL-safe base64; empty when the system has no randomness to give.
std::string randomUrlToken(std::size_t byteCount);

// SHA-256 of the text, 32 bytes; empty when the digest fails.
std::vector<std::uint8_t> sha256Bytes(const std::string& text);

// RFC 4648, URL-safe alphabet, no padding.
std::string base64UrlEncode(const std::vector<std::uint8_t>& bytes);

// Everything but RFC 3986's unreserved characters becomes %XX, byte by byte.
std::string percentEncode(const std::string& text);
