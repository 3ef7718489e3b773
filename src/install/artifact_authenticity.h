#pragma once

// Checks a package against its release statement. The publisher signs and dates the statement, so an attacker who
// controls the update server cannot forge it.

#include <string>

#include "install/update_cancellation.h"

// The address of the publisher's statements and the publisher's keys, from the configuration. If both are empty,
// verifyArtifactAuthenticity succeeds without a request.
struct ArtifactAuthenticity {
    std::string url;  // https; a package's statement has the address <url>/<SHA-256 of the package>.txt
    std::string keys; // one to four Ed25519 public keys, base64 of 32 bytes each, separated by spaces
};

// SHA-256 digests of the package file and of the decrypted archive, if the update run has already computed them.
// verifyArtifactAuthenticity computes an empty digest from the file.
struct PackageDigests {
    std::string package;
    std::string plaintext;
};

// Fetches the release statement of the package file. Checks it against the files on disk, the pinned keys and the
// clock. `decryptedPath` is the decrypted archive; it is empty if the package is not encrypted. Blocking; install
// worker only. On failure returns false and sets `failureText` to a message for the user.
[[nodiscard]] bool verifyArtifactAuthenticity(const ArtifactAuthenticity& pinned, const std::string& version,
                                              const std::string& packagePath, const std::string& decryptedPath,
                                              const UpdateCancellation& stop, std::string& failureText,
                                              const PackageDigests& digests = {});
