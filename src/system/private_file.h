#pragma once

// Files that only their owner may read, for what holds a token. Any thread.

#include <string>

// Creates a folder and its missing parents. On Linux each new folder gets mode 0700; existing folders keep their mode.
// Failures are ignored: the write that follows reports them.
void createPrivateFolders(const std::string& path);

// Writes a whole file in text mode and waits until the bytes are on disk, so that it can be renamed over another file.
// On Linux the file has mode 0600 before the first byte is written, even when it existed with a wider mode. On failure
// a part of the file may stay behind.
[[nodiscard]] bool writePrivateFile(const std::string& path, const std::string& text);

// Makes a rename in this folder safe against a power cut. Windows needs nothing for that.
void syncFolder(const std::string& path);
