#pragma once

// What the standard library's file functions leave out: locks between processes, syncs, and errors that pass. Blocking;
// any thread. One source per platform.

#include <cstdint>
#include <string>
#include <system_error>
#include <vector>

// An exclusive lock on a file. The operating system releases it when the process ends, however it ends. The file is
// created when it is missing and never removed: two processes could otherwise lock two files of the same name.
class FileLock {
  public:
    FileLock() = default;
    ~FileLock(); // releases the lock
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

    enum class Result {
        Taken,
        Held,       // by another process or another object; try again
        Impossible, // the file cannot be made, or its file system has no locks
    };
    // Does not wait.
    [[nodiscard]] Result tryToTake(const std::string& path);

  private:
    std::intptr_t file_ = -1;
};

// Both bring written data to the disk, so that it survives a loss of power. False when the disk reports an error.
[[nodiscard]] bool syncFile(const std::string& path);
[[nodiscard]] bool syncFiles(const std::vector<std::string>& files); // all of them on one file system

// True when a removal or rename may succeed a moment later, because another program holds the file. Windows only: Linux
// removes and renames files that are open.
[[nodiscard]] bool isFileInUse(const std::error_code& error);
