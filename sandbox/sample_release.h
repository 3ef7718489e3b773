#pragma once

// What the sandbox's update server offers: the sample editor, published the way a deployer publishes.

#include "publish/release.h"

#include <filesystem>
#include <string>

inline constexpr char kSampleEditorVersion[] = "1.0.0";

// Packs editor and font, makes a publisher's key in `workFolder` and publishes for this platform in `siteFolder`.
// False: `failureText` says why.
[[nodiscard]] bool publishSampleEditor(const std::filesystem::path& editor, const std::filesystem::path& font,
                                       const std::filesystem::path& workFolder, const std::filesystem::path& siteFolder,
                                       const std::string& baseUrl, ReleaseResult& result, std::string& failureText);
