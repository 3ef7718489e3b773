#pragma once

// Writes the package file of a release from its zip archive: either as an unchanged copy, or sealed in the launcher's
// encrypted container (install/package_container.h). Blocking; reads 64 KiB at a time. Any thread.

#include <cstdint>
#include <string>

#include "publish/progress.h"

// The maximum number of bytes that AES-GCM may encrypt with one nonce.
inline constexpr std::uint64_t kMaxSealedBytes = (std::uint64_t{1} << 36) - 32;

// The hashes are computed while the package is written. If the zip has changed since the caller hashed it,
// `plaintextSha256` differs from the caller's hash.
struct WrittenPackage {
    std::uint64_t size = 0;
    std::string sha256;
    std::string plaintextSha256; // of the zip; equals `sha256` if the package is not sealed
};

// Copies the zip to `outputPath` and replaces an existing file. On failure returns false, sets `failureText` to a
// message for the user, and leaves an incomplete file.
[[nodiscard]] bool copyPackage(const std::string& zipPath, const std::string& outputPath, WrittenPackage& written,
                               std::string& failureText, const Progress& progress = {});

// Seals the zip in a container at `outputPath`. `key` has 32 bytes. Each call uses a new random nonce. On failure does
// the same as copyPackage.
[[nodiscard]] bool sealPackage(const std::string& zipPath, const std::string& outputPath, const std::string& key,
                               WrittenPackage& written, std::string& failureText, const Progress& progress = {});

// Returns the hash of a file; empty if it cannot be read to its end. `step` is the name of the step for `progress`.
[[nodiscard]] std::string hashFile(const std::string& path, const char* step, const Progress& progress);
