#pragma once

// Whether the launcher could install an archive: found out by doing what it does, entry by entry, without writing.

#include <cstdint>
#include <string>
#include <vector>

enum class PackagePlatform { Linux, Windows };

// "linux" or "windows". False for any other name.
[[nodiscard]] bool parsePackagePlatform(const std::string& name, PackagePlatform& platform);

struct ArchiveSummary {
    std::size_t files = 0;
    std::uint64_t unpackedBytes = 0;
    std::vector<std::string> warnings;
};

// Unpacks every entry into nowhere, 64 KiB at a time; only the archive's directory is held in memory. Refused is what
// the launcher refuses (names, damage, encryption, methods) and what would unpack into something else than was packed:
// two entries for one file, links, names that `platform` cannot have, no editor where the launcher looks for it.
// False leaves words for the user in `failureText`.
[[nodiscard]] bool checkArchive(const std::string& zipPath, PackagePlatform platform, ArchiveSummary& summary,
                                std::string& failureText);
