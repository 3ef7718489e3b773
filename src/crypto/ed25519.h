#pragma once

// Verifies Ed25519 signatures (RFC 8032). Any thread.

#include <cstddef>
#include <string>

inline constexpr std::size_t kEd25519KeySize = 32;
inline constexpr std::size_t kEd25519SignatureSize = 64;

// True if `signature` is a valid signature of `text` by `publicKey`. Signature and key are raw bytes.
[[nodiscard]] bool verifyEd25519(const std::string& text, const std::string& signature, const std::string& publicKey);
