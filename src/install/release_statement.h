#pragma once

// Parses and checks a release statement: a small text file, signed and dated by the publisher, about one package file.
// Its address is <authenticity url>/<sha256 of the package file>.txt. The text is ASCII and has exactly these lines in
// this order. Each line ends with one line feed.
//
//   release-statement-v1
//   version: 1.4.2
//   size: 104857600                        bytes of the package file
//   sha256: <64 lower-case hexadecimal digits, of the package file>
//   plaintext-sha256: <64 digits, of the decrypted archive; "-" if the package is not encrypted>
//   not-before: 1795228661                 seconds since the Unix epoch
//   not-after: 1795833461
//   status: ok                             any other value withdraws the release
//   ed25519: <base64>                      one to four of these
//
// A signature covers all bytes before the first ed25519 line. One valid signature by any pinned key is enough.
// Any thread.

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace statement {
// The first line is part of the signed text. It separates release statements from other texts signed with the same key.
inline constexpr std::string_view kFirstLine = "release-statement-v1";
enum Field : std::size_t { Version, Size, Sha256, PlaintextSha256, NotBefore, NotAfter, Status, kFieldCount };
inline constexpr std::array<std::string_view, kFieldCount> kFieldNames = {
    "version", "size", "sha256", "plaintext-sha256", "not-before", "not-after", "status"};
inline constexpr std::string_view kFieldSeparator = ": ";
inline constexpr std::string_view kSignatureName = "ed25519";
inline constexpr std::string_view kNoPlaintext = "-";
inline constexpr std::string_view kStatusOk = "ok";
inline constexpr std::string_view kFileExtension = ".txt";

inline constexpr std::size_t kMaxBytes = 4096;
inline constexpr std::size_t kMaxSignatures = 4; // also the maximum number of pinned keys
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

// Parses a statement. False if the text does not have exactly the form at the top of this file.
[[nodiscard]] bool parseReleaseStatement(std::string_view text, ReleaseStatement& release);

struct StatementNumbers {
    std::int64_t size = 0;
    std::int64_t notBefore = 0;
    std::int64_t notAfter = 0;
};
// Parses the three numbers of a statement. False if one is not a plain decimal, or if the lifetime (notAfter -
// notBefore) is not positive or is longer than kMaxLifetimeSeconds.
[[nodiscard]] bool parseStatementNumbers(const ReleaseStatement& release, StatementNumbers& numbers);

// True if at least one signature verifies with at least one of `keys`. Each key is a raw Ed25519 public key of 32
// bytes.
[[nodiscard]] bool isSignedByAny(const ReleaseStatement& release, const std::vector<std::string>& keys);

// Decodes the keys of ArtifactAuthenticity::keys. Returns no keys if one is invalid or if there are more than four.
[[nodiscard]] std::vector<std::string> parsePublisherKeys(const std::string& text);

// The version from the manifest, and the values computed from the package on disk.
struct PackageIdentity {
    std::string version;
    std::int64_t size = 0;
    std::string sha256;
    std::string plaintextSha256; // kNoPlaintext if the package is not encrypted
};

// Checks whether the statement is signed by one of `keys`, is for `package` and is valid at `nowSeconds`. Returns an
// empty text if all of this is true, otherwise a message for the user.
[[nodiscard]] std::string judgeReleaseStatement(std::string_view text, const std::vector<std::string>& keys,
                                                const PackageIdentity& package, std::int64_t nowSeconds);
