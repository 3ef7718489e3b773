#pragma once

// Writes the package file of a release from its zip archive: as it is, or sealed in the launcher's encrypted container
// (install/package_container.h) with a key and a nonce of its own. 64 KiB at a time.

#include <cstdint>
#include <string>

// What AES-GCM can protect under one nonce.
inline constexpr std::uint64_t kMaxSealedBytes = (std::uint64_t{1} << 36) - 32;

// The hashes are of the bytes that went through, so a zip that changes meanwhile is noticed by its hash.
struct WrittenPackage {
    std::uint64_t size = 0;
    std::string sha256;
    std::string plaintextSha256; // of the zip; the same as `sha256` where nothing is sealed
    std::string keyText;         // base64 of the container's key; empty where nothing is sealed
};

// Either writes a new file at `outputPath`, over one that exists. On false there are words for the user in
// `failureText`, and what was written stays.
[[nodiscard]] bool copyPackage(const std::string& zipPath, const std::string& outputPath, WrittenPackage& written,
                               std::string& failureText);
[[nodiscard]] bool sealPackage(const std::string& zipPath, const std::string& outputPath, WrittenPackage& written,
                               std::string& failureText);
