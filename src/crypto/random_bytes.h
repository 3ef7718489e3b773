#pragma once

// Generates random bytes for keys, nonces and tokens. Any thread.

#include <cstddef>
#include <string>

// Returns `count` random bytes. Empty if OpenSSL's random generator fails.
[[nodiscard]] std::string randomBytes(std::size_t count);

// Returns `byteCount` random bytes as URL-safe Base64. Empty if OpenSSL's random generator fails.
[[nodiscard]] std::string randomUrlToken(std::size_t byteCount);
