#pragma once

// Finds the editor's executable and the version that the launcher installed. Any thread; no state.
// A function that finds nothing returns an empty text.

#include <array>
#include <string>

class LauncherApp;

// Returns the managed directory, into which the launcher installs the editor: "editor" in the launcher's own directory.
[[nodiscard]] std::string managedEditorDirectory();

// Returns the path of the version marker, a file that the launcher writes at the end of an install. Its one line is the
// version from the manifest.
[[nodiscard]] std::string editorVersionMarkerPath();

// Returns the first line of a file without line ends and spaces at its end.
[[nodiscard]] std::string readFirstLine(const std::string& path);

// Returns the version in the marker. Empty if the launcher has installed no editor.
[[nodiscard]] std::string installedEditorVersion();

// Returns the editor's display name. It includes the version if `version` is not empty.
[[nodiscard]] std::string editorLabel(const std::string& version);

// Returns the possible paths of the editor's executable below `directory`, in search order: editor/editor.exe,
// bin/editor.exe, editor.exe.
[[nodiscard]] std::array<std::string, 3> editorExecutablePlaces(const std::string& directory);

// Returns the first path of editorExecutablePlaces(directory) that is a regular file.
[[nodiscard]] std::string findEditorExecutable(const std::string& directory);

// Searches for the executable in the launcher's directory, in its parent and in its grandparent. If none of them
// contains the executable, an install is necessary.
[[nodiscard]] std::string findEditorNearLauncher();

// Searches for the executable in the managed directory.
[[nodiscard]] std::string findManagedEditor();

// Returns the executable that opens projects and that the screens show. Searches the directory in the environment
// variable ZANTOR_DIR, then the user's install path, the managed directory, and the directories of
// findEditorNearLauncher. An editor in ZANTOR_DIR or in the install path does not replace an install, so
// findEditorNearLauncher ignores both on purpose.
[[nodiscard]] std::string resolveEditorExecutable(const LauncherApp& app);
