#pragma once

// Extracts the verified zip archive into a staging directory. Blocking; install worker only. Starts up to three helper
// threads and joins them.

#include <string>

#include "install/update_cancellation.h"

enum class ExtractionOutcome {
    Done,
    Unreadable, // not a zip archive; nothing was written
    Failed,     // cancelled, unsafe name, damaged entry, write error, or staging directory not empty; files are kept
};

// Extracts all files of the archive and syncs them to disk. Skips entries whose name is empty or ends in "/": a
// directory is created only for the files in it. A file keeps its Unix mode, but only its owner may write to it. The
// editor's executables always become executable. A cancel takes effect before the next entry. When the launcher closes,
// the extraction also stops inside an entry.
[[nodiscard]] ExtractionOutcome extractArchive(const std::string& archivePath, const std::string& stagingDirectory,
                                               const UpdateCancellation& stop);
