#include "system/single_instance.h"

#include <cerrno>
#include <filesystem>
#include <memory>
#include <string>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include "system/operating_system.h"

namespace {

// Opens the lock file in a directory that all sessions of the user share, because the sessions share the settings.
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

// The lock file is never removed: after a removal, two instances could lock two different files with the same name.
struct SingleInstanceGuard::Lock {
    explicit Lock(int descriptor)
        : file(descriptor) {}
    ~Lock() {
        ::flock(file, LOCK_UN); // close() alone keeps the lock if a child between fork and exec has the descriptor
        ::close(file);
    }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

    const int file;
};

SingleInstanceGuard::SingleInstanceGuard() {
    const int file = openLockFile();
    if (file < 0) return;
    if (::flock(file, LOCK_EX | LOCK_NB) == 0) {
        lock_ = std::make_unique<Lock>(file);
        return;
    }
    anotherInstanceRuns_ = errno == EWOULDBLOCK;
    ::close(file);
}

SingleInstanceGuard::~SingleInstanceGuard() = default;

void SingleInstanceGuard::release() {
    lock_.reset();
}
