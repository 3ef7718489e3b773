#pragma once

// What the sandbox's update server offers: the sample editor, published the way a deployer publishes.

#include <filesystem>
#include <string>
#include <vector>

#include "publish/release.h"

inline constexpr char kSampleEditorVersion[] = "1.0.0";

// What can be wrong with a release that arrives undamaged.
namespace release_fault {
inline constexpr char kWrongHash[] = "wrong-hash";                // the manifest speaks of another package
inline constexpr char kWrongArchiveHash[] = "wrong-archive-hash"; // or of another archive inside it
inline constexpr char kWrongKey[] = "wrong-key";                  // its key does not open the package
inline constexpr char kUntrusted[] = "untrusted";                 // signed with a key that the launcher does not know
inline constexpr char kUnsigned[] = "unsigned";                   // no statement is published
inline constexpr char kExpired[] = "expired";
inline constexpr char kRevoked[] = "revoked";
} // namespace release_fault
inline const std::vector<std::string> kReleaseFaults = {
    release_fault::kWrongHash, release_fault::kWrongArchiveHash, release_fault::kWrongKey, release_fault::kUntrusted,
    release_fault::kUnsigned,  release_fault::kExpired,          release_fault::kRevoked};

struct SampleRelease {
    std::filesystem::path editor, font;
    std::filesystem::path archive; // published instead of those two, unless it is empty
    std::filesystem::path workFolder, siteFolder;
    std::string baseUrl;
    std::string fault; // one of the above, or empty
};

// Packs editor and font, makes a publisher's key in `workFolder` and publishes for this platform in `siteFolder`.
// False: `failureText` says why.
[[nodiscard]] bool publishSampleEditor(const SampleRelease& sample, ReleaseResult& result, std::string& failureText);
