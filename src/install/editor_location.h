#pragma once

// Where the editor is, and which version the launcher installed. Reads the disk, holds no state, any thread.
// Every answer is a path or a version as text; empty means there is none.

#include <array>
#include <string>

class LauncherApp;

// Where the launcher installs, always: "editor" beside the launcher.
std::string managedEditorDirectory();

// The marker of a finished install: one line, the version as the manifest gave it.
std::string editorVersionMarkerPath();

// The first line of a file, without line ends and spaces at its end.
std::string readFirstLine(const std::string& path);

// The version that the marker names; empty means that no managed install is recorded.
std::string installedEditorVersion();

// The editor with its version, for people; without one where none is given.
std::string editorLabel(const std::string& version);

// Where an editor's executable may be under one directory, in the order of the search: editor/editor.exe,
// bin/editor.exe, editor.exe.
std::array<std::string, 3> editorExecutablePlaces(const std::string& directory);

// The first of those places that holds a file.
std::string findEditorExecutable(const std::string& directory);

// The search that decides about installing: the launcher's directory and two levels above it.
std::string findEditorNearLauncher();

std::string findManagedEditor();

// The search that screens and the opening of projects use: ZANTOR_DIR, the user's install path, the managed directory,
// then near the launcher. Deliberately not the search above: neither variable nor setting makes an install unnecessary.
std::string resolveEditorExecutable(const LauncherApp& app);
