#pragma once

// Checks a package against its release statement: signed by the publisher, dated, and beyond the update server's power
// to forge.

#include <string>

#include "install/run_stop.h"

// The publisher that a deployment pins. Both empty: no publisher is pinned, and the check passes without a request.
struct ArtifactAuthenticity {
    std::string url;  // https; the statement of a package is at <url>/<SHA-256 of the package>.txt
    std::string keys; // one to four Ed25519 public keys, base64 of 32 bytes each, separated by spaces
};

// Fetches the release statement of the package file and compares it with the files on disk, the pinned keys and the
// clock. `decryptedPath` is the archive from a container, empty for a plain package. Blocking; install worker only.
// False leaves a message for the user in `failureText`.
[[nodiscard]] bool verifyArtifactAuthenticity(const ArtifactAuthenticity& pinned, const std::string& version,
                                              const std::string& packagePath, const std::string& decryptedPath,
                                              const RunStop& stop, std::string& failureText);
