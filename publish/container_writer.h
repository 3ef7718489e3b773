#pragma once

// Writes the package file of a release from its zip archive, as it is or sealed in the launcher's encrypted container
// (install/package_container.h). Blocking, 64 KiB at a time; any thread.

#include <cstdint>
#include <string>

// AES-GCM protects no more bytes than these under one nonce.
inline constexpr std::uint64_t kMaxSealedBytes = (std::uint64_t{1} << 36) - 32;

// The hashes are taken while the bytes are copied: a zip that changes meanwhile gets an unexpected hash.
struct WrittenPackage {
    std::uint64_t size = 0;
    std::string sha256;
    std::string plaintextSha256; // of the zip; equals `sha256` in a plain package
};

// Both write a file at `outputPath` and replace an existing one. On failure they return false, put a message for the
// user into `failureText` and leave an incomplete file behind.
[[nodiscard]] bool copyPackage(const std::string& zipPath, const std::string& outputPath, WrittenPackage& written,
                               std::string& failureText);

// `key` has 32 bytes. Every call draws its own nonce.
[[nodiscard]] bool sealPackage(const std::string& zipPath, const std::string& outputPath, const std::string& key,
                               WrittenPackage& written, std::string& failureText);
