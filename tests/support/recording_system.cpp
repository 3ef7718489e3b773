#include "support/recording_system.h"

#include <atomic>

#include "system/operating_system.h"

static std::atomic<std::int64_t> theTime = 0; // atomic: workers read it

RecordingSystem& recordingSystem() {
    static RecordingSystem instance;
    return instance;
}

void setRecordedTime(std::int64_t seconds) {
    theTime = seconds;
}

std::string launcherDirectory() {
    return recordingSystem().launcherDirectory;
}

std::string userDataDirectory() {
    return recordingSystem().userDataDirectory;
}

std::string userDocumentsDirectory() {
    return recordingSystem().userDocumentsDirectory;
}

std::string getEnvironmentString(const char* name) {
    const auto found = recordingSystem().environment.find(name);
    return found == recordingSystem().environment.end() ? std::string() : found->second;
}

std::int64_t currentTimeSeconds() {
    return theTime;
}

std::string browseForFolder(const std::string& title, const std::string& startPath) {
    recordingSystem().folderDialogs.emplace_back(title, startPath);
    return recordingSystem().chosenFolder;
}

std::string pickProjectFile(const std::string& title, const std::string& initialPath) {
    recordingSystem().fileDialogs.emplace_back(title, initialPath);
    return recordingSystem().pickedFile;
}

bool isEditorRunning() {
    return recordingSystem().editorRunning;
}

bool launchEditorProcess(const std::string& executable, const std::string& argument,
                         const std::string& workingDirectory, std::string& errorText) {
    recordingSystem().launches.push_back({executable, argument, workingDirectory});
    if (!recordingSystem().launchError.empty()) errorText = recordingSystem().launchError;
    return recordingSystem().launchError.empty();
}

void openUrlInBrowser(const std::string& url) {
    recordingSystem().openedUrls.push_back(url);
}

void openInFileManager(const std::string& path) {
    recordingSystem().openedFolders.push_back(path);
}
