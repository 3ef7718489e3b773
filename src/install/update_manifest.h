#pragma once

// The update manifest: one JSON object at the configured address that names the version to install and its package.
//
//   version            text, required; compared byte for byte, no order is assumed
//   url                text, required; https address of the package
//   sha256             lower-case hexadecimal, of the package file; absent: not verified
//   plaintext_sha256   the same, of the decrypted archive; absent: not verified
//   encryption.key     base64 of the container's key; absent for a plain zip
//
// A member of another type counts as absent, every other member is ignored.

#include <string>

struct UpdateManifest {
    std::string version;
    std::string url;
    std::string sha256;
    std::string plaintextSha256;
    std::string encryptionKey;
};

// Whether an address of the manifest was filled in; what the example configuration holds does not count.
bool isManifestUrlConfigured(const std::string& url);

// False leaves words for the user in `failureText`.
[[nodiscard]] bool parseUpdateManifest(const std::string& body, UpdateManifest& manifest, std::string& failureText);

// The version as part of a file name: as many bytes as the version has, each either kept or an underscore.
std::string sanitizeVersion(const std::string& version);
