#pragma once

// Declares operating-system services that the standard library does not have. Each platform has its own sources, and a
// program links those of its platform. The tests of the screens link a replacement that records the calls.
//
// Any thread, except the two dialogs: call them on the frame thread only, which they block until the user has chosen.
// No function keeps state or throws. Texts are UTF-8. An empty text means "none".

#include <cstdint>
#include <string>

// --- directories ---------------------------------------------------------------------------------------------------

// Returns the directory of the running executable. Empty if the system does not report it.
[[nodiscard]] std::string launcherDirectory();

// Returns the launcher's directory for user data, and creates it if it is missing. If the creation fails, returns the
// path nevertheless. Empty if the environment variables for it are not set.
[[nodiscard]] std::string userDataDirectory();

// Returns the user's Documents directory. Does not create it and does not check whether it exists.
[[nodiscard]] std::string userDocumentsDirectory();

// --- environment and time ------------------------------------------------------------------------------------------

// Returns the value of an environment variable. Empty if it is not set.
[[nodiscard]] std::string getEnvironmentString(const char* name);

// Returns the current time in seconds since the Unix epoch.
[[nodiscard]] std::int64_t currentTimeSeconds();

// --- dialogs (frame thread only, modal) ----------------------------------------------------------------------------

// Lets the user choose a folder. Returns its path; empty after a cancel.
[[nodiscard]] std::string browseForFolder(const std::string& title, const std::string& startPath);

// Lets the user choose a .zantorproj file. Returns its path; empty after a cancel.
[[nodiscard]] std::string pickProjectFile(const std::string& title, const std::string& initialPath);

// --- processes -----------------------------------------------------------------------------------------------------

// True if a process of any user has the image name "editor.exe", in upper or lower case. False if the processes cannot
// be listed.
[[nodiscard]] bool isEditorRunning();

// Starts the editor as a process that can outlive the launcher. `argument` is its only argument; empty: no argument. If
// `workingDirectory` is empty, the editor gets the launcher's working directory. On failure returns false and sets
// `errorText` to a message for the user.
[[nodiscard]] bool launchEditorProcess(const std::string& executable, const std::string& argument,
                                       const std::string& workingDirectory, std::string& errorText);

// --- the desktop ---------------------------------------------------------------------------------------------------

// Opens a file, a folder or a URL with the program that the desktop associates with it. Failures are not reported.
void shellOpen(const std::string& target, const std::string& parameters);

// Does nothing if `url` is empty.
void openUrlInBrowser(const std::string& url);

// Opens a directory, and creates it if it is missing. Does nothing if `path` is empty.
void openInFileManager(const std::string& path);
