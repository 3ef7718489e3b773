#pragma once

// A project on disk is a folder that holds one small text file, <name>.zantorproj. The launcher writes the file once;
// only the editor reads it. Any thread.
//
//   ZantorProject:
//     Name: <the project's name, raw UTF-8>
//     FormatVersion: 1

#include <string>

// The folder of a project: the parent of a path that ends in ".zantorproj" (case-sensitive), else the path itself.
[[nodiscard]] std::string projectDirectory(const std::string& projectPath);

// Creates <location>/<name>/<name>.zantorproj and returns its path. Uses an existing folder if it is empty. On failure
// returns an empty path and sets `error` to a message for the user; files and folders created so far stay.
[[nodiscard]] std::string createProjectOnDisk(const std::string& location, const std::string& name, std::string& error);
