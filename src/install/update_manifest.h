#pragma once

// The update manifest: one JSON object at the configured address that names the version to install and its package.
//
//   version            text, required; compared byte for byte, versions have no order
//   url                text, required; https address of the package
//   sha256             lower-case hexadecimal, of the package file; absent: not verified
//   plaintext_sha256   the same, of the decrypted archive; absent: not verified
//   encryption.key     base64 of the container's key; absent for a plain zip
//
// A member of another type counts as absent. Every other member is ignored. Any thread.

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

struct NoAnswer {}; // no connection, TLS failure, time-out, cut body
struct BadManifest {
    std::string failureText; // for the user
};
using ManifestAnswer = std::variant<UpdateManifest, NoAnswer, BadManifest>;

// Asks the server for the manifest. Blocking; a worker thread only. No answer once `abort` is aborted.
[[nodiscard]] ManifestAnswer fetchManifest(const std::string& manifestUrl, const HttpAbort& abort);

// False leaves a message for the user in `failureText`.
[[nodiscard]] bool parseUpdateManifest(const std::string& body, UpdateManifest& manifest, std::string& failureText);

// The version as part of a file name. Letters, digits, "-" and "." stay; every other byte becomes an underscore.
[[nodiscard]] std::string sanitizeVersion(const std::string& version);

// Where the package of a version is kept.
inline constexpr std::string_view kPackageNameStart = "zantor_editor_";
[[nodiscard]] std::string packagePathIn(const std::string& downloadsDirectory, const std::string& version);
