#pragma once

// Random bytes for keys, nonces and tokens. Any thread.

#include <cstddef>
#include <string>

// Empty when OpenSSL has no randomness.
[[nodiscard]] std::string randomBytes(std::size_t count);

// `byteCount` random bytes as URL-safe Base64. Empty when OpenSSL has no randomness.
[[nodiscard]] std::string randomUrlToken(std::size_t byteCount);
