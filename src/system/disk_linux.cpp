#include "system/disk.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace {

template<class Sync>
bool syncPath(const std::string& path, const Sync& sync) {
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) return false;
    const bool synced = sync(file) == 0 || errno == EINVAL; // EINVAL: the file system cannot sync
    ::close(file);
    return synced;
}

} // namespace

FileLock::~FileLock() {
    if (file_ < 0) return;
    const int file = static_cast<int>(file_);
    ::flock(file, LOCK_UN); // close() alone keeps the lock while a child between fork and exec shares it
    ::close(file);
}

FileLock::Result FileLock::tryToTake(const std::string& path) {
    if (file_ < 0) file_ = ::open(path.c_str(), O_RDONLY | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0644);
    if (file_ < 0) return Result::Impossible;
    if (::flock(static_cast<int>(file_), LOCK_EX | LOCK_NB) == 0) return Result::Taken;
    return errno == EWOULDBLOCK || errno == EINTR ? Result::Held : Result::Impossible;
}

bool syncFile(const std::string& path) {
    return syncPath(path, [](int file) { return ::fsync(file); });
}

// Syncs the whole file system with one call, which is much faster than a sync of each file.
bool syncFiles(const std::vector<std::string>& files) {
    return files.empty() || syncPath(files.front(), [](int file) { return ::syncfs(file); });
}

bool isFileInUse(const std::error_code&) {
    return false;
}
