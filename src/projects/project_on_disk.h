#pragma once

// A project on disk is a folder that contains one small text file, <name>.zantorproj. The launcher writes the file
// once. Only the editor reads it. Any thread.
//
//   ZantorProject:
//     Name: <the project's name, raw UTF-8>
//     FormatVersion: 1

#include <string>

// Returns the folder of a project. If the path ends in ".zantorproj" (case-sensitive), this is its parent folder;
// otherwise the path itself is the folder.
[[nodiscard]] std::string projectDirectory(const std::string& projectPath);

// Creates <location>/<name>/<name>.zantorproj and returns its path. Uses an existing folder if it is empty. On failure
// returns an empty path and sets `error` to a message for the user. Does not delete folders and files that it has
// created before the failure.
[[nodiscard]] std::string createProjectOnDisk(const std::string& location, const std::string& name, std::string& error);
