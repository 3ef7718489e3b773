#pragma once

// Where the editor is, and which version the launcher installed. Any thread; no state.
// Every function returns a path or a version as text; empty means that there is none.

#include <array>
#include <string>

class LauncherApp;

// The directory into which the launcher always installs: "editor" in the launcher's own directory.
[[nodiscard]] std::string managedEditorDirectory();

// The file that records a finished install: one line, the version as the manifest gives it.
[[nodiscard]] std::string editorVersionMarkerPath();

// The first line of a file without trailing line ends and spaces.
[[nodiscard]] std::string readFirstLine(const std::string& path);

// The version that the marker names; empty means that no managed install is recorded.
[[nodiscard]] std::string installedEditorVersion();

// The editor's name for the user, with the version where there is one.
[[nodiscard]] std::string editorLabel(const std::string& version);

// The paths that may hold an editor's executable below one directory, in search order: editor/editor.exe,
// bin/editor.exe, editor.exe.
[[nodiscard]] std::array<std::string, 3> editorExecutablePlaces(const std::string& directory);

// The first of those paths that is a regular file.
[[nodiscard]] std::string findEditorExecutable(const std::string& directory);

// The search that decides whether an install is needed: the launcher's directory and two levels above it.
[[nodiscard]] std::string findEditorNearLauncher();

[[nodiscard]] std::string findManagedEditor();

// The search for opening projects and for the screens: ZANTOR_DIR, the user's install path, the managed directory, then
// near the launcher. It differs from findEditorNearLauncher on purpose: neither the variable nor the setting makes an
// install unnecessary.
[[nodiscard]] std::string resolveEditorExecutable(const LauncherApp& app);
