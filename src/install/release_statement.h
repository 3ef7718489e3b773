#pragma once

// The release statement: a small static text, signed and dated by the publisher, for one package file. Its address is
// <authenticity url>/<sha256 of the package file>.txt. ASCII; exactly these lines in this order, each ended by one line
// feed:
//
//   release-statement-v1
//   version: 1.4.2
//   size: 104857600                        bytes of the package file
//   sha256: <64 lower-case hexadecimal digits, of the package file>
//   plaintext-sha256: <the same of the decrypted archive, or - for a plain zip>
//   not-before: 1795228661                 seconds since the Unix epoch
//   not-after: 1795833461
//   status: ok                             anything else withdraws the release
//   ed25519: <base64>                      one to four of these
//
// A signature covers every byte before the first ed25519 line; one good signature by any pinned key is enough.
// Any thread.

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace statement {
inline constexpr std::string_view kFirstLine = "release-statement-v1"; // no signature for another purpose begins so
enum Field : std::size_t { Version, Size, Sha256, PlaintextSha256, NotBefore, NotAfter, Status, kFieldCount };
inline constexpr std::array<std::string_view, kFieldCount> kFieldNames = {
    "version", "size", "sha256", "plaintext-sha256", "not-before", "not-after", "status"};
inline constexpr std::string_view kFieldSeparator = ": ";
inline constexpr std::string_view kSignatureName = "ed25519";
inline constexpr std::string_view kNoPlaintext = "-";
inline constexpr std::string_view kStatusOk = "ok";
inline constexpr std::string_view kFileExtension = ".txt";

inline constexpr std::size_t kMaxBytes = 4096;
inline constexpr std::size_t kMaxSignatures = 4; // also the limit of pinned keys
inline constexpr std::int64_t kDaySeconds = 86400;
inline constexpr std::int64_t kMaxLifetimeSeconds = 92 * kDaySeconds;
inline constexpr std::int64_t kClockToleranceSeconds = kDaySeconds; // before not-before and after not-after
} // namespace statement

// A parsed statement. Trust none of its values before a signature has been verified.
struct ReleaseStatement {
    std::string signedText;
    std::array<std::string, statement::kFieldCount> fields;
    std::vector<std::string> signatures; // 64 bytes each
};

// False unless the text has exactly this form.
[[nodiscard]] bool parseReleaseStatement(std::string_view text, ReleaseStatement& release);

// False when a number is not a plain decimal, or when the lifetime is not positive or too long.
struct StatementNumbers {
    std::int64_t size = 0;
    std::int64_t notBefore = 0;
    std::int64_t notAfter = 0;
};
[[nodiscard]] bool parseStatementNumbers(const ReleaseStatement& release, StatementNumbers& numbers);

// True when one of the signatures is by one of the keys, each 32 bytes.
[[nodiscard]] bool isSignedByAny(const ReleaseStatement& release, const std::vector<std::string>& keys);

// The keys in a configuration text. Empty unless there are one to four and all of them are usable.
[[nodiscard]] std::vector<std::string> parsePublisherKeys(const std::string& text);

// Computed from the package on disk.
struct PackageIdentity {
    std::string version;
    std::int64_t size = 0;
    std::string sha256;
    std::string plaintextSha256; // or kNoPlaintext
};

// Returns what is wrong with the statement that was served for this package, as the user reads it; empty when the
// package is genuine.
[[nodiscard]] std::string judgeReleaseStatement(std::string_view text, const std::vector<std::string>& keys,
                                                const PackageIdentity& package, std::int64_t nowSeconds);
