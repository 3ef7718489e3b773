#pragma once

// Unpacks the verified zip archive into a staging directory and puts that in the place of the installed editor.
// Install worker only.

#include <atomic>
#include <string>
#include <string_view>

// Whether an entry of this name may be written. Refused are absolute names, names with a colon (drives, streams), and
// names with a part "..", where both slashes separate parts on every platform. Names are UTF-8 path text.
bool isSafeEntryName(std::string_view name);

enum class ExtractionOutcome {
    Done,
    Unreadable, // no zip archive; nothing was written
    Failed,     // cancelled, an unsafe name, or a damaged entry; the staging directory holds what came before it
};

// Entries whose name is empty or ends in "/" are passed over, so directories exist only for the files in them. What was
// made executable on Unix stays so, and the editor's executable always becomes so.
ExtractionOutcome extractArchive(const std::string& archivePath, const std::string& stagingDirectory,
                                 const std::atomic<bool>& cancelRequested);

// Deletes the managed editor directory and renames the staging directory to it. No copy of the old editor is kept.
// False when the rename failed: the staging directory is gone then, and so is the old editor, wholly or in part.
[[nodiscard]] bool swapIn(const std::string& stagingDirectory);
