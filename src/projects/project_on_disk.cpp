#include "projects/project_on_disk.h"

#include <filesystem>
#include <fstream>

#include "system/disk.h"
#include "system/path_text.h"

namespace {

constexpr const char* kExtension = ".zantorproj";

} // namespace

std::string projectDirectory(const std::string& projectPath) {
    const std::filesystem::path path(projectPath);
    return path.extension() == kExtension ? pathText(path.parent_path()) : projectPath;
}

std::string createProjectOnDisk(const std::string& location, const std::string& name, std::string& error) {
    const std::filesystem::path folder = std::filesystem::path(location) / name;
    std::error_code status;
    if (std::filesystem::exists(std::filesystem::status(folder, status))) {
        // A folder that cannot be read counts as not empty.
        if (!std::filesystem::is_empty(folder, status) || status) {
            error = "That folder already exists and is not empty.";
            return {};
        }
    }
    std::filesystem::create_directories(folder, status);
    if (status || !std::filesystem::is_directory(folder, status)) {
        error = "Could not create the project folder.";
        return {};
    }

    const std::filesystem::path file = folder / (name + kExtension);
    const std::filesystem::path unfinished = folder / (name + kExtension + ".tmp");
    {
        std::ofstream stream(unfinished, std::ios::trunc); // text mode, to get the platform's line ends
        if (!stream) {
            error = "Could not create the .zantorproj project file.";
            return {};
        }
        stream << "ZantorProject:\n  Name: " << name << "\n  FormatVersion: 1\n";
    }
    (void)syncFile(pathText(unfinished)); // without it, the renamed file could be empty after a power failure
    std::filesystem::rename(unfinished, file, status);
    if (status) {
        error = "Could not save the .zantorproj project file.";
        return {};
    }
    return pathText(file);
}
