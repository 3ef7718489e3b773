#pragma once

// Publishes the sample editor for the sandbox's update server, with the code of volo-publish. Blocking; use it on one
// thread.

#include <filesystem>
#include <string>
#include <vector>

#include "publish/release.h"

inline constexpr char kSampleEditorVersion[] = "1.0.0";

// Faults of a published release. update_server.h has the faults of a transfer.
namespace release_fault {
inline constexpr char kWrongHash[] = "wrong-hash";                // the manifest's sha256 does not match
inline constexpr char kWrongArchiveHash[] = "wrong-archive-hash"; // the manifest's plaintext_sha256 does not match
inline constexpr char kWrongKey[] = "wrong-key";                  // the manifest's key does not open the package
inline constexpr char kUntrusted[] = "untrusted";                 // no pinned key has signed the statement
inline constexpr char kUnsigned[] = "unsigned";                   // no statement is published
inline constexpr char kExpired[] = "expired";
inline constexpr char kRevoked[] = "revoked";
} // namespace release_fault
inline const std::vector<std::string> kReleaseFaults = {
    release_fault::kWrongHash, release_fault::kWrongArchiveHash, release_fault::kWrongKey, release_fault::kUntrusted,
    release_fault::kUnsigned,  release_fault::kExpired,          release_fault::kRevoked};

struct SampleRelease {
    std::filesystem::path editor, font;
    std::filesystem::path archive; // archive to publish; empty: pack editor and font
    std::filesystem::path workFolder, siteFolder;
    std::string baseUrl;
    std::string fault; // a release_fault, or empty
};

// Packs the editor and the font, creates a publisher's key in `workFolder`, and publishes the package for this platform
// in `siteFolder`. On failure returns false and sets `failureText`.
[[nodiscard]] bool publishSampleEditor(const SampleRelease& sample, ReleaseResult& result, std::string& failureText);
