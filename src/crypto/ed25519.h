#pragma once

// Ed25519 signatures (RFC 8032) as they are verified. Any thread.

#include <cstddef>
#include <string>

inline constexpr std::size_t kEd25519KeySize = 32;
inline constexpr std::size_t kEd25519SignatureSize = 64;

// True when `signature` is a signature of `text` by the holder of `publicKey`.
[[nodiscard]] bool verifyEd25519(const std::string& text, const std::string& signature, const std::string& publicKey);
