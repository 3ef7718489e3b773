#pragma once

// Random bytes for keys, nonces and tokens. Any thread.

#include <cstddef>
#include <string>

// Empty when the system has no randomness to give.
[[nodiscard]] std::string randomBytes(std::size_t count);

// `byteCount` random bytes as URL-safe base64; empty likewise.
[[nodiscard]] std::string randomUrlToken(std::size_t byteCount);
