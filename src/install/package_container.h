#pragma once

// Reads the encrypted container of an editor package: the zip archive, encrypted with AES-256-GCM without additional
// authenticated data.
//
//   offset  size  field
//        0     8  magic: "ZANTOR1" and a zero byte
//        8     1  format version, 1
//        9     1  nonce length, 12
//       10     1  tag length, 16
//       11     1  reserved: ignored, not covered by the tag
//       12     8  payload size P, big-endian
//       20    12  nonce
//       32     P  ciphertext
//   32 + P    16  tag
//
// Any thread; no shared state. Decryption cannot be cancelled.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace container {
inline constexpr std::string_view kMagic{"ZANTOR1\0", 8};
inline constexpr std::uint8_t kFormatVersion = 1;
inline constexpr std::size_t kSizeOffset = 12;
inline constexpr std::size_t kNonceOffset = 20;
inline constexpr std::size_t kHeaderSize = 32;
inline constexpr std::size_t kNonceSize = 12;
inline constexpr std::size_t kTagSize = 16;
inline constexpr std::size_t kKeySize = 32;
} // namespace container

// True if the file begins with the magic bytes. False for a file that is too short or cannot be read.
[[nodiscard]] bool isEncryptedPackage(const std::string& path);

// Reads the payload size from the header. If the header is invalid or does not match the file's size, returns false and
// sets `failureText` to a message for the user.
[[nodiscard]] bool readContainerSize(const std::string& path, std::uint64_t& payloadSize, std::string& failureText);

// Decrypts a container into a plain archive, 64 KiB at a time. `keyText` is base64 in the standard or the URL alphabet;
// other bytes are skipped, and "=" ends the text. On failure returns false and sets `failureText` to a message for the
// user.
//
// The tag is at the end of the container, so the plaintext is written before the tag can be checked. After a failure
// the output stays on disk and may contain unauthenticated plaintext: use it only if the result is true. Write errors
// are ignored, because the extraction fails for an incomplete archive. After each write, passes the size of the output
// so far to `onWritten`.
[[nodiscard]] bool decryptPackage(const std::string& containerPath, const std::string& outputPath,
                                  const std::string& keyText, std::string& failureText,
                                  const std::function<void(std::uint64_t size)>& onWritten = {});

// Decrypts like decryptPackage, but passes the plaintext to `sink` piece by piece. Use the plaintext only if the result
// is true.
using PlaintextSink = std::function<void(const unsigned char* bytes, std::size_t count)>;
[[nodiscard]] bool decryptPackageTo(const PlaintextSink& sink, const std::string& containerPath,
                                    const std::string& keyText, std::string& failureText);
