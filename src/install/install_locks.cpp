#include "install/install_locks.h"

#include <chrono>
#include <filesystem>
#include <thread>

namespace {

// Returns false if the user cancelled before the lock was free.
bool wait(FileLock& lock, const std::filesystem::path& path, const UpdateCancellation& stop) {
    while (lock.tryToTake(path.string()) == FileLock::Result::Held) {
        if (stop.cancelRequested) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return true;
}

} // namespace

bool InstallLocks::take(const std::string& downloadsDirectory, const std::string& editorDirectory,
                        const UpdateCancellation& stop) {
    const std::filesystem::path downloads(downloadsDirectory);
    const std::filesystem::path editor(editorDirectory);
    return wait(downloads_, downloads / "zantor_editor.lock", stop) &&
           wait(staging_, editor.parent_path() / "editor-staging.lock", stop);
}
