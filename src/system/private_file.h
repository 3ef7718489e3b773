#pragma once

// Writes files that only their owner may read, for data such as tokens. Any thread.

#include <string>

// Creates a folder and its missing parents. On Linux each new folder gets mode 0700; existing folders keep their mode.
// Failures are ignored, because the write that follows then fails too.
void createPrivateFolders(const std::string& path);

// Writes a whole file in text mode and waits until its data is on the disk, so that it can safely replace another file.
// On Linux the file has mode 0600 before the first byte is written, even if it existed with another mode. After a
// failure an incomplete file may remain.
[[nodiscard]] bool writePrivateFile(const std::string& path, const std::string& text);

// Waits until a rename in this folder is on the disk, so that it survives a power failure. Does nothing on Windows.
void syncFolder(const std::string& path);
