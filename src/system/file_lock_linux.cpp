#include "system/file_lock.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

FileLock::~FileLock() {
    if (file_ < 0) return;
    const int file = static_cast<int>(file_);
    ::flock(file, LOCK_UN); // close() alone keeps the lock if a child between fork and exec has the descriptor
    ::close(file);
}

FileLock::Result FileLock::tryToTake(const std::string& path) {
    if (file_ < 0) file_ = ::open(path.c_str(), O_RDONLY | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0644);
    if (file_ < 0) return Result::Impossible;
    if (::flock(static_cast<int>(file_), LOCK_EX | LOCK_NB) == 0) return Result::Taken;
    return errno == EWOULDBLOCK || errno == EINTR ? Result::Held : Result::Impossible;
}
