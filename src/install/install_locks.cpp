#include "install/install_locks.h"

#include <chrono>
#include <filesystem>
#include <thread>

namespace {

InstallLocks::Waiting wait(FileLock& lock, const std::filesystem::path& path, const UpdateCancellation& stop) {
    InstallLocks::Waiting waiting = InstallLocks::Waiting::No;
    while (lock.tryToTake(path.string()) == FileLock::Result::Held) {
        if (stop.cancelRequested) return InstallLocks::Waiting::Cancelled;
        waiting = InstallLocks::Waiting::Yes;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return waiting;
}

} // namespace

InstallLocks::Waiting InstallLocks::take(const std::string& downloadsDirectory, const std::string& editorDirectory,
                                         const UpdateCancellation& stop) {
    const std::filesystem::path downloads(downloadsDirectory);
    const std::filesystem::path editor(editorDirectory);
    const Waiting first = wait(downloads_, downloads / "zantor_editor.lock", stop);
    if (first == Waiting::Cancelled) return first;
    const Waiting second = wait(staging_, editor.parent_path() / "editor-staging.lock", stop);
    return second == Waiting::No ? first : second;
}
