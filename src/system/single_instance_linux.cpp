#include "system/single_instance.h"

#include <cerrno>
#include <filesystem>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include "system/operating_system.h"

namespace {

// The runtime directory lives and dies with the logon session, which is what the guard is for.
int openLockFile() {
    for (const std::string& folder : {getEnvironmentString("XDG_RUNTIME_DIR"), userDataDirectory()}) {
        if (folder.empty()) continue;
        const std::filesystem::path path = std::filesystem::path(folder) / "VoloLauncherSingleInstanceMutex";
        const int file = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
        if (file >= 0) return file;
    }
    return -1;
}

} // namespace

SingleInstanceGuard::SingleInstanceGuard()
    : lockFile_(openLockFile()) {
    if (lockFile_ < 0 || ::flock(lockFile_, LOCK_EX | LOCK_NB) == 0) return;
    anotherInstanceRuns_ = errno == EWOULDBLOCK;
    ::close(lockFile_);
    lockFile_ = -1;
}

SingleInstanceGuard::~SingleInstanceGuard() {
    release();
}

// The file stays: removing it would let two instances lock two files of one name.
void SingleInstanceGuard::release() {
    if (lockFile_ < 0) return;
    ::flock(lockFile_, LOCK_UN); // explicitly, since a child between fork and exec still shares the lock
    ::close(lockFile_);
    lockFile_ = -1;
}
