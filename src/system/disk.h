#pragma once

// Adds file operations that the standard library does not have: syncs, and detection of files that another program
// uses. Blocking; any thread. One source per platform.

#include <string>
#include <system_error>
#include <vector>

// Waits until the file's data is on the disk, so that it survives a power failure. False if the disk reports an error.
[[nodiscard]] bool syncFile(const std::string& path);

// Does the same for several files. All of them must be on one file system.
[[nodiscard]] bool syncFiles(const std::vector<std::string>& files);

// True if a removal or rename failed because another program uses the file, so that a later try may succeed. Always
// false on Linux, which can remove and rename open files.
[[nodiscard]] bool isFileInUse(const std::error_code& error);
