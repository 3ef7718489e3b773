#pragma once

// Fetches and parses the update manifest, one JSON object at the configured address. The manifest names the version to
// install and the address of its package.
//
//   version            text, required; compared for equality only, so an older version is installed too
//   url                text, required; https address of the package
//   sha256             SHA-256 of the package file, lower-case hexadecimal; not verified if absent
//   plaintext_sha256   SHA-256 of the decrypted archive, lower-case hexadecimal; not verified if absent
//   encryption.key     the container's key in base64; absent if the package is not encrypted
//
// A member of another type counts as absent. All other members are ignored. Any thread.

#include <string>
#include <string_view>
#include <variant>

#include "system/http.h"

struct UpdateManifest {
    std::string version;
    std::string url;
    std::string sha256;
    std::string plaintextSha256;
    std::string encryptionKey;
};

// False for an empty address and for the placeholder of the example configuration.
[[nodiscard]] bool isManifestUrlConfigured(const std::string& url);

struct NoAnswer {}; // no connection, TLS failure, time-out, incomplete body
struct BadManifest {
    std::string failureText; // for the user
};
using ManifestAnswer = std::variant<UpdateManifest, NoAnswer, BadManifest>;

// Fetches the manifest from the server. Blocking; install worker only. Returns NoAnswer after `abort` was aborted.
[[nodiscard]] ManifestAnswer fetchManifest(const std::string& manifestUrl, const HttpAbort& abort);

// Parses the body of a response. On failure returns false and sets `failureText` to a message for the user.
[[nodiscard]] bool parseUpdateManifest(const std::string& body, UpdateManifest& manifest, std::string& failureText);

// Returns the version as it appears in a file name. Letters, digits, "-" and "." stay; each other byte becomes "_".
[[nodiscard]] std::string sanitizeVersion(const std::string& version);

inline constexpr std::string_view kPackageNameStart = "zantor_editor_";

// Returns the path of a version's package file.
[[nodiscard]] std::string packagePathIn(const std::string& downloadsDirectory, const std::string& version);
