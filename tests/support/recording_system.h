#pragma once

// The operating system as the tests of the screens meet it: it answers what it was told to, and writes down what it was
// asked to do. Directories are set before the launcher is built; everything else at any time.

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
    // What it answers.
    std::string launcherDirectory, userDataDirectory, userDocumentsDirectory;
    std::map<std::string, std::string> environment;
    bool editorRunning = false;
    std::string launchError; // empty: the editor starts
    std::string chosenFolder, pickedFile;

    // What it was asked, in order.
    std::vector<RecordedLaunch> launches;
    std::vector<std::pair<std::string, std::string>> folderDialogs, fileDialogs; // title, start
    std::vector<std::string> openedUrls, openedFolders;
};

RecordingSystem& recordingSystem(); // the one that the launcher calls
void setRecordedTime(std::int64_t seconds);
