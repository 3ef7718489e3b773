#pragma once

// Publishes the sample editor for the sandbox's update server with the code of volo-publish. Blocking; one thread.

#include <filesystem>
#include <string>
#include <vector>

#include "publish/release.h"

inline constexpr char kSampleEditorVersion[] = "1.0.0";

// Faults of a release, beside damage on the way.
namespace release_fault {
inline constexpr char kWrongHash[] = "wrong-hash";                // sha256 of the manifest does not match
inline constexpr char kWrongArchiveHash[] = "wrong-archive-hash"; // plaintext_sha256 of the manifest does not match
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
    std::filesystem::path archive; // published instead; empty: pack the two above
    std::filesystem::path workFolder, siteFolder;
    std::string baseUrl;
    std::string fault; // one of the above, or empty
};

// Packs editor and font, makes a publisher's key in `workFolder` and publishes for this platform in `siteFolder`.
// Returns false with the reason in `failureText`.
[[nodiscard]] bool publishSampleEditor(const SampleRelease& sample, ReleaseResult& result, std::string& failureText);
