#pragma once

// Extracts the verified zip archive into a staging directory, and replaces the installed editor with that directory.
// Blocking; install worker only.

#include <atomic>
#include <string>
#include <string_view>

// False for a name that could leave the staging directory: an absolute name, a name with a colon (drive, stream), or a
// name with a part "..". Both slashes separate parts on every platform. Names are UTF-8.
[[nodiscard]] bool isSafeEntryName(std::string_view name);

enum class ExtractionOutcome {
    Done,
    Unreadable, // no zip archive; nothing was written
    Failed,     // cancelled, an unsafe name, or a damaged entry; earlier entries stay in the staging directory
};

// Skips entries whose name is empty or ends in "/": directories exist only for the files in them. A file keeps the mode
// that it had on Unix, and the editor's executables always become executable.
[[nodiscard]] ExtractionOutcome extractArchive(const std::string& archivePath, const std::string& stagingDirectory,
                                               const std::atomic<bool>& cancelRequested);

// Deletes the managed editor directory and renames the staging directory to it. Keeps no copy of the old editor.
// False when the rename fails: then the staging directory is deleted, and the old editor wholly or in part.
[[nodiscard]] bool swapIn(const std::string& stagingDirectory);
