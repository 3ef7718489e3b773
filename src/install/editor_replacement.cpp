#include "install/editor_replacement.h"

#include <chrono>
#include <filesystem>
#include <system_error>
#include <thread>

#include "install/editor_location.h"
#include "system/disk.h"

namespace fs = std::filesystem;

// Deletes the target and renames the staging directory to it. Returns the error of the rename.
static std::error_code replaceTarget(const std::string& stagingDirectory, const std::string& target) {
    std::error_code error;
    fs::remove_all(target, error); // if this fails, the rename fails too
    fs::rename(stagingDirectory, target, error);
    return error;
}

bool replaceEditor(const std::string& stagingDirectory, const UpdateCancellation& stop) {
    const std::string target = managedEditorDirectory();
    std::error_code ignored;
    // Delete the marker and the executables first: a crash then never leaves a half-deleted folder that looks
    // installed. If the target is a symbolic link, only the link is deleted; the directory behind it stays unchanged.
    if (!fs::is_symlink(target, ignored)) {
        fs::remove(editorVersionMarkerPath(), ignored);
        for (const std::string& place : editorExecutablePlaces(target))
            fs::remove(place, ignored);
    }
    std::error_code error = replaceTarget(stagingDirectory, target);
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (error && isFileInUse(error) && !stop.closing && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        error = replaceTarget(stagingDirectory, target);
    }
    if (error) fs::remove_all(stagingDirectory, ignored);
    return !error;
}
