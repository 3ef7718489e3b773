#pragma once

// Extracts the verified zip archive into a staging directory. Blocking; install worker only, which starts up to three
// helper threads and joins them.

#include <string>
#include <string_view>

#include "install/run_stop.h"

// False for a name that could leave the staging directory: an absolute name, a name with a colon (drive, stream), or a
// name with a part "..". Both slashes separate parts on every platform. Names are UTF-8.
[[nodiscard]] bool isSafeEntryName(std::string_view name);

enum class ExtractionOutcome {
    Done,
    Unreadable, // no zip archive; nothing was written
    Failed,     // cancelled, an unsafe name, a damaged entry, or files in the staging directory; entries stay there
};

// Skips entries whose name is empty or ends in "/": directories exist only for the files in them. A file keeps the mode
// that it had on Unix, without write permission for others, and the editor's executables always become executable.
// Everything is on the disk when it is done. A cancel takes effect before the next entry, closing also inside an entry.
[[nodiscard]] ExtractionOutcome extractArchive(const std::string& archivePath, const std::string& stagingDirectory,
                                               const RunStop& stop);
