#pragma once

// File operations that the standard library does not have: locks between processes, syncs, and detection of files that
// another program uses. Blocking; any thread. One source per platform.

#include <cstdint>
#include <string>
#include <system_error>
#include <vector>

// An exclusive lock on a file. The operating system releases it when the process ends, also after a crash. The lock
// file is created if it is missing. It is never removed: otherwise two processes could lock two files with the same
// name.
class FileLock {
  public:
    FileLock() = default;
    ~FileLock(); // releases the lock
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

    enum class Result {
        Taken,
        Held,       // another process or another FileLock holds it; try again
        Impossible, // the file cannot be created, or its file system has no locks
    };
    // Does not wait.
    [[nodiscard]] Result tryToTake(const std::string& path);

  private:
    std::intptr_t file_ = -1;
};

// Waits until the file's data is on the disk, so that it survives a power failure. False if the disk reports an error.
[[nodiscard]] bool syncFile(const std::string& path);

// Does the same for several files. All of them must be on one file system.
[[nodiscard]] bool syncFiles(const std::vector<std::string>& files);

// True if a removal or rename failed because another program uses the file, so that a later try may succeed. Always
// false on Linux, which can remove and rename open files.
[[nodiscard]] bool isFileInUse(const std::error_code& error);
