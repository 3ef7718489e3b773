#pragma once

// A project on disk: a folder with one small text file in it, named after the project, extension .zantorproj. The
// launcher writes the file once and never reads it; it is the editor's. Any thread.
//
//   ZantorProject:
//     Name: <the project's name, raw UTF-8>
//     FormatVersion: 1

#include <string>

// The folder of a project from its stored path: the parent of a .zantorproj file (the case of the extension counts),
// and any other path itself.
std::string projectDirectory(const std::string& projectPath);

// Creates <location>/<name>/<name>.zantorproj and gives its path. An existing empty folder is taken over. On failure
// the path is empty, `error` holds words for the user, and what was created so far stays.
[[nodiscard]] std::string createProjectOnDisk(const std::string& location, const std::string& name, std::string& error);
