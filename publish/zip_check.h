#pragma once

// Checks whether the launcher can install an archive by doing what it does, entry by entry, without writing.
// Blocking; any thread.

#include <cstddef>
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

// Unpacks every entry and discards the bytes, 64 KiB at a time; only the archive's directory is held in memory. Refuses
// what the launcher refuses (unsafe names, damage, encryption, unknown methods). Also refuses what would unpack into
// something else than was packed: two entries for one file, links, names that `platform` cannot store, and an archive
// without an editor where the launcher looks for it. Returns false with a message for the user in `failureText`.
[[nodiscard]] bool checkArchive(const std::string& zipPath, PackagePlatform platform, ArchiveSummary& summary,
                                std::string& failureText);
