#pragma once

// Plans an extraction: decides for each entry of an archive which file it becomes, before any entry is extracted. Any
// thread.

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include <miniz.h>

// False for a name that could lead out of the staging directory: an absolute name, a name with a colon (a drive or an
// NTFS stream), or a name with a part "..". "/" and "\" separate parts on every platform. Names are UTF-8.
[[nodiscard]] bool isSafeEntryName(std::string_view name);

struct PlannedFile {
    mz_uint index = 0; // of the entry in the archive
    std::string path;
    std::filesystem::perms mode = std::filesystem::perms::unknown; // unknown: keep the mode that miniz sets
};

struct ArchivePlan {
    std::vector<PlannedFile> files; // by ascending index; directory entries are left out
    bool endsAtBadEntry = false;    // an entry is unsafe or unreadable; `files` has only the files before this entry
    // True if one thread must extract the files in order: two files may have the same path, or the path of one file may
    // be a parent directory of another.
    bool needsOrder = false;
};

// Reads the central directory of the open archive. Writes nothing.
[[nodiscard]] ArchivePlan planArchive(mz_zip_archive& archive, const std::filesystem::path& stagingDirectory);
