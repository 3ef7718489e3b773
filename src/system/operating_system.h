#pragma once

// What the launcher asks of the operating system, beyond what the standard library's file functions cover.
//
// One source per platform (operating_system_linux.cpp, ...), chosen when a program is linked; the tests of the screens
// link a recording one instead. All functions are free of state and may be called on any thread, except the two
// dialogs, which belong to the frame thread and block it until the user answers. None throws. Texts are UTF-8; an empty
// text is the answer "there is none".

#include <cstdint>
#include <string>

// --- directories ---------------------------------------------------------------------------------------------------

// The directory that holds the running executable; empty when the system cannot tell.
std::string launcherDirectory();

// The launcher's own directory for per-user data, created when missing (a failure to create it is ignored, the text
// comes back all the same). Empty when the environment names no place for it.
std::string userDataDirectory();

// The user's Documents directory. Nothing is created and nothing is tested.
std::string userDocumentsDirectory();

// --- environment and time ------------------------------------------------------------------------------------------

// The value of an environment variable; empty when it is not set.
std::string getEnvironmentString(const char* name);

// Seconds since the Unix epoch.
std::int64_t currentTimeSeconds();

// --- dialogs (frame thread only, modal) ----------------------------------------------------------------------------

// The folder that the user chose; empty on cancel.
std::string browseForFolder(const std::string& title, const std::string& startPath);

// The .zantorproj file that the user chose; empty on cancel.
std::string pickProjectFile(const std::string& title, const std::string& initialPath);

// --- processes -----------------------------------------------------------------------------------------------------

// Whether any process of the machine, whoever's it is, runs an image named "editor.exe" in any case. A failure to list
// processes counts as no.
bool isEditorRunning();

// Starts the editor as a process of its own that outlives the launcher, and forgets it. `argument` is one argument,
// left out when empty; an empty `workingDirectory` means the launcher's own. False leaves words for the user in
// `errorText`.
[[nodiscard]] bool launchEditorProcess(const std::string& executable, const std::string& argument,
                                       const std::string& workingDirectory, std::string& errorText);

// --- the desktop ---------------------------------------------------------------------------------------------------

// Opens a target with the program that the desktop associates with it. The outcome is not known.
void shellOpen(const std::string& target, const std::string& parameters);

// Both do nothing for an empty text. openInFileManager takes a directory, and creates it first when it is missing.
void openUrlInBrowser(const std::string& url);
void openInFileManager(const std::string& path);
