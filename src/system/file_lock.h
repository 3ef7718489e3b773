#pragma once

// Locks a file against other processes. Accesses the disk; any thread. One source per platform.

#include <cstdint>
#include <string>

// An exclusive lock on a file. The operating system releases the lock when the process ends, even after a crash. The
// lock file is created if it is missing. It is never removed: after a removal, two processes could lock two different
// files with the same name.
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
    // Tries once. Does not wait until the lock is free.
    [[nodiscard]] Result tryToTake(const std::string& path);

  private:
    std::intptr_t file_ = -1;
};
