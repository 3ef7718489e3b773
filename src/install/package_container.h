#pragma once

// The encrypted container of an editor package: AES-256-GCM over the plain zip archive, no additional data.
//
//   offset  size  field
//        0     8  magic: "ZANTOR1" and a zero byte
//        8     1  format version, 1
//        9     1  nonce length, 12
//       10     1  tag length, 16
//       11     1  reserved: never read, and the tag does not cover it
//       12     8  payload size P, big-endian
//       20    12  nonce
//       32     P  ciphertext
//   32 + P    16  tag
//
// Any thread; no shared state, so decrypting cannot be cancelled.

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

// Whether the file begins with the magic. A file that is short or cannot be read is not one.
bool isEncryptedPackage(const std::string& path);

// The payload size that the header declares. False, with words for the user, when header and file do not hold together.
[[nodiscard]] bool readContainerSize(const std::string& path, std::uint64_t& payloadSize, std::string& failureText);

// Decrypts a container into a plain archive, 64 KiB at a time. `keyText` is base64 in either alphabet; what belongs to
// neither is skipped, and "=" ends it. False leaves words for the user in `failureText`.
//
// The output is written before the tag at the container's end can be checked. After a failure it may hold anything, up
// to the whole unauthenticated plaintext, and it stays on disk: nothing may open it unless the answer was true. Errors
// of writing are not looked at; a short output is for its reader to find.
[[nodiscard]] bool decryptPackage(const std::string& containerPath, const std::string& outputPath,
                                  const std::string& keyText, std::string& failureText);

// The same in a stream: `sink` gets the plaintext piece by piece. What it got means nothing unless the answer was true.
using PlaintextSink = std::function<void(const unsigned char* bytes, std::size_t count)>;
[[nodiscard]] bool decryptPackageTo(const PlaintextSink& sink, const std::string& containerPath,
                                    const std::string& keyText, std::string& failureText);
