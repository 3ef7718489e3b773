#pragma once

// The publisher's word for a package: a signed, dated statement that the update server cannot forge.

#include <string>

// What a deployment pins. Both empty: no publisher is pinned, and the check passes without a request.
struct ArtifactAuthenticity {
    std::string url;  // https; the statement of a package is at <url>/<its SHA-256>.txt
    std::string keys; // one to four Ed25519 public keys, base64 of 32 bytes each, separated by spaces
};
