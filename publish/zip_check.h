#pragma once

// Checks whether the launcher can install an archive. Treats each entry as the launcher does, but writes no files.
// Blocking; any thread.

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "publish/progress.h"

enum class PackagePlatform { Linux, Windows };

// Parses "linux" or "windows". False for any other name.
[[nodiscard]] bool parsePackagePlatform(const std::string& name, PackagePlatform& platform);

struct ArchiveSummary {
    std::size_t files = 0;
    std::uint64_t unpackedBytes = 0;
    std::vector<std::string> warnings;
};

// Extracts each entry and discards its bytes, 64 KiB at a time. Only the archive's central directory is kept in memory.
// Refuses what the launcher refuses: unsafe names, damage, encryption, unknown compression methods. Also refuses
// entries that would not become the files that were packed: two entries for one file, links, and names that `platform`
// cannot store. Also refuses an archive that has no editor in the places where the launcher searches for it. If the
// archive is refused, returns false and sets `failureText` to a message for the user.
[[nodiscard]] bool checkArchive(const std::string& zipPath, PackagePlatform platform, ArchiveSummary& summary,
                                std::string& failureText, const Progress& progress = {});
