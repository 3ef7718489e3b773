#pragma once

// What an archive's entries become on the disk, decided before any of them is extracted. Any thread.

#include <filesystem>
#include <string>
#include <vector>

#include <miniz.h>

struct PlannedFile {
    mz_uint index = 0; // of the entry
    std::string path;
    std::filesystem::perms mode = std::filesystem::perms::unknown; // unknown: as the zip library makes it
};

struct ArchivePlan {
    std::vector<PlannedFile> files; // by ascending index; entries without a file are left out
    bool endsAtBadEntry = false;    // the next entry is refused or unreadable, and the rest is left out
    bool needsOrder = false;        // two files may have the same path, or one is the other's directory
};

// Reads the directory of the open archive. Nothing is written.
[[nodiscard]] ArchivePlan planArchive(mz_zip_archive& archive, const std::filesystem::path& stagingDirectory);
