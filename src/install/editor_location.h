#pragma once

// Finds the editor's executable and the version that the launcher installed. Any thread; no state.
// A function that finds nothing returns an empty text.

#include <array>
#include <string>

class LauncherApp;

// Returns the directory into which the launcher installs the editor: "editor" in the launcher's own directory. In this
// header it is called the managed directory.
[[nodiscard]] std::string managedEditorDirectory();

// Returns the path of the version marker. This file records a finished install. Its one line is the manifest's version.
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

// Returns the first of these paths that is a regular file.
[[nodiscard]] std::string findEditorExecutable(const std::string& directory);

// Searches the launcher's directory, its parent and its grandparent. Empty if none of them contains an editor; then an
// install is needed.
[[nodiscard]] std::string findEditorNearLauncher();

// Searches the folder into which the launcher installs the editor.
[[nodiscard]] std::string findManagedEditor();

// Searches for the editor that opens projects and that the screens show: first in ZANTOR_DIR, then in the user's
// install path, in the managed directory, and near the launcher. findEditorNearLauncher ignores ZANTOR_DIR and the
// install path on purpose: an editor there does not make an install unnecessary.
[[nodiscard]] std::string resolveEditorExecutable(const LauncherApp& app);
