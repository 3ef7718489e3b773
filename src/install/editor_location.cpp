#include "install/editor_location.h"

#include <filesystem>
#include <fstream>
#include <system_error>

#include "system/operating_system.h"

std::string managedEditorDirectory() {
    return (std::filesystem::path(launcherDirectory()) / "editor").string();
}

std::string editorVersionMarkerPath() {
    return (std::filesystem::path(managedEditorDirectory()) / ".zantor_editor_version").string();
}

std::string readFirstLine(const std::string& path) {
    std::ifstream file(path);
    std::string line;
    std::getline(file, line);
    // Trim only these three bytes. A tab stays.
    line.erase(line.find_last_not_of("\n\r ") + 1);
    return line;
}

std::string installedEditorVersion() {
    return readFirstLine(editorVersionMarkerPath());
}

std::string editorLabel(const std::string& version) {
    return version.empty() ? "VOLO Editor" : "VOLO " + version;
}

std::array<std::string, 3> editorExecutablePlaces(const std::string& directory) {
    const std::filesystem::path base(directory);
    return {(base / "editor" / "editor.exe").string(), (base / "bin" / "editor.exe").string(),
            (base / "editor.exe").string()};
}

std::string findEditorExecutable(const std::string& directory) {
    if (directory.empty()) return {};
    for (const std::string& place : editorExecutablePlaces(directory)) {
        std::error_code error;
        if (std::filesystem::is_regular_file(place, error)) return place;
    }
    return {};
}

std::string findEditorNearLauncher() {
    std::filesystem::path directory(launcherDirectory());
    for (int level = 0; level < 3; ++level, directory = directory.parent_path()) {
        std::string found = findEditorExecutable(directory.string());
        if (!found.empty()) return found;
    }
    return {};
}

std::string findManagedEditor() {
    return findEditorExecutable(managedEditorDirectory());
}
