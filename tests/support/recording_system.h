#pragma once

// An implementation of system/operating_system.h for tests: it returns the answers that a test sets, and records every
// call that would change the user's desktop. Set the directories before the launcher is built, the rest at any time.
// Main thread, except setRecordedTime.

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

struct RecordedLaunch {
    std::string executable, argument, workingDirectory;
    bool operator==(const RecordedLaunch&) const = default;
};

struct RecordingSystem {
    // The answers, set by a test.
    std::string launcherDirectory, userDataDirectory, userDocumentsDirectory;
    std::map<std::string, std::string> environment;
    bool editorRunning = false;
    std::string launchError; // empty: the start succeeds
    std::string chosenFolder, pickedFile;

    // Recorded calls, oldest first.
    std::vector<RecordedLaunch> launches;
    std::vector<std::pair<std::string, std::string>> folderDialogs, fileDialogs; // title and start path
    std::vector<std::string> openedUrls, openedFolders;
};

[[nodiscard]] RecordingSystem& recordingSystem();
void setRecordedTime(std::int64_t seconds);
