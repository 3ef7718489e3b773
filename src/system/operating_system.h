#pragma once

// Operating-system services beyond the file functions of the standard library. One set of sources per platform, chosen
// when a program is linked; the tests of the screens link a recording one instead.
//
// Any thread, except the two dialogs: they belong to the frame thread and block it until the user answers. No function
// keeps state or throws. Texts are UTF-8. An empty text means "none".

#include <cstdint>
#include <string>

// --- directories ---------------------------------------------------------------------------------------------------

// The directory that holds the running executable; empty when the system cannot tell.
[[nodiscard]] std::string launcherDirectory();

// The launcher's directory for per-user data, created when missing. A failure to create it is ignored and the text
// still returned. Empty when the environment names no place for it.
[[nodiscard]] std::string userDataDirectory();

// The user's Documents directory. It is neither created nor tested.
[[nodiscard]] std::string userDocumentsDirectory();

// --- environment and time ------------------------------------------------------------------------------------------

// The value of an environment variable; empty when it is not set.
[[nodiscard]] std::string getEnvironmentString(const char* name);

// Seconds since the Unix epoch.
[[nodiscard]] std::int64_t currentTimeSeconds();

// --- dialogs (frame thread only, modal) ----------------------------------------------------------------------------

// The folder that the user chose; empty on cancel.
[[nodiscard]] std::string browseForFolder(const std::string& title, const std::string& startPath);

// The .zantorproj file that the user chose; empty on cancel.
[[nodiscard]] std::string pickProjectFile(const std::string& title, const std::string& initialPath);

// --- processes -----------------------------------------------------------------------------------------------------

// True when any process on the machine, of any user, has the image name "editor.exe" in upper or lower case. False when
// the processes cannot be listed.
[[nodiscard]] bool isEditorRunning();

// Starts the editor as a process that outlives the launcher. `argument` is one argument, left out when empty. An empty
// `workingDirectory` means the launcher's. On false `errorText` holds the text for the user.
[[nodiscard]] bool launchEditorProcess(const std::string& executable, const std::string& argument,
                                       const std::string& workingDirectory, std::string& errorText);

// --- the desktop ---------------------------------------------------------------------------------------------------

// Opens a target with the program that the desktop associates with it. Reports no failure.
void shellOpen(const std::string& target, const std::string& parameters);

// Both do nothing for an empty text. openInFileManager takes a directory and creates it when it is missing.
void openUrlInBrowser(const std::string& url);
void openInFileManager(const std::string& path);
