#include "config/launcher_settings.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string_view>

#include "config/settings_text.h"
#include "system/operating_system.h"
#include "system/private_file.h"
#include "system/whole_file.h"

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kGeneralSection = "[General]";
constexpr std::string_view kRefreshToken = "auth/refreshToken";
constexpr std::string_view kUserName = "auth/userName";
constexpr std::string_view kUserEmail = "auth/userEmail";
constexpr std::string_view kInstallPath = "install/path";
constexpr std::string_view kDefaultLocation = "projects/defaultLocation";
constexpr std::string_view kLastAddedLocation = "projects/lastAddedLocation";
constexpr std::string_view kProjectsPrefix = "Projects\\";
constexpr std::string_view kProjectsSize = "Projects\\size";

// Returns the value of Projects\size, the number of project entries. Does not recognise comments and sections: the last
// line with this key wins, in any section.
int readProjectCount(std::string_view text) {
    int count = 0;
    std::string key;
    std::string value;
    for (std::string_view line; nextSettingLine(text, line);) {
        if (splitSettingLine(line, key, value) && key == kProjectsSize) count = std::atoi(value.c_str());
    }
    return count;
}

void readProjectField(ProjectEntry& project, std::string_view field, const std::string& value) {
    if (field == "name") {
        project.name = value;
    } else if (field == "path") {
        project.path = value;
    } else if (field == "lastOpened") {
        project.lastOpened = std::strtoll(value.c_str(), nullptr, 10);
    } else if (field == "favorite") {
        project.favorite = value == "true" || value == "1";
    } else if (field == "targetPlatform") {
        project.targetPlatform = value;
    } else if (field == "editorVersion") {
        project.editorVersion = value;
    }
}

// Reads the lines "Projects\N\field=value" into the entries. N starts at 1. Does not recognise comments and
// sections.
void readProjects(std::string_view text, std::vector<ProjectEntry>& projects) {
    std::string key;
    std::string value;
    for (std::string_view line; nextSettingLine(text, line);) {
        if (!splitSettingLine(line, key, value) || !key.starts_with(kProjectsPrefix)) continue;
        const std::size_t numberEnd = key.find('\\', kProjectsPrefix.size());
        if (numberEnd == std::string::npos) continue;
        const int number = std::atoi(key.substr(kProjectsPrefix.size(), numberEnd - kProjectsPrefix.size()).c_str());
        if (number < 1 || static_cast<std::size_t>(number) > projects.size()) continue;
        ProjectEntry& project = projects[static_cast<std::size_t>(number) - 1];
        readProjectField(project, std::string_view(key).substr(numberEnd + 1), value);
    }
}

void addLine(std::string& text, std::string_view key, std::string_view value) {
    text.append(encodeSettingKey(key)).append("=").append(encodeSettingValue(value)).append("\n");
}

void addLineUnlessEmpty(std::string& text, std::string_view key, std::string_view value) {
    if (!value.empty()) addLine(text, key, value);
}

void addProject(std::string& text, std::size_t number, const ProjectEntry& project) {
    const std::string prefix = std::string(kProjectsPrefix) + std::to_string(number) + "\\";
    addLine(text, prefix + "name", project.name);
    addLine(text, prefix + "path", project.path);
    addLine(text, prefix + "lastOpened", std::to_string(project.lastOpened));
    addLine(text, prefix + "favorite", project.favorite ? "true" : "false");
    addLineUnlessEmpty(text, prefix + "targetPlatform", project.targetPlatform);
    addLineUnlessEmpty(text, prefix + "editorVersion", project.editorVersion);
}

ProjectEntry* findProject(std::vector<ProjectEntry>& projects, const std::string& path) {
    const auto found = std::find_if(projects.begin(), projects.end(),
                                    [&](const ProjectEntry& project) { return project.path == path; });
    return found == projects.end() ? nullptr : &*found;
}

} // namespace

LauncherSettings::LauncherSettings() {
    const std::string folder = userDataDirectory();
    if (!folder.empty()) filePath_ = (fs::path(folder) / "Launcher.conf").string();
}

bool LauncherSettings::load() {
    clearSession();
    projects_.clear();
    installPath_.clear();
    defaultLocation_.clear();
    lastAddedLocation_.clear();
    if (filePath_.empty()) return false;

    std::string text;
    fileIsUnreadable_ = false;
    if (!readWholeFile(filePath_, text)) {
        std::error_code unknown;
        fileIsUnreadable_ = fs::exists(fs::symlink_status(filePath_, unknown));
        return false;
    }

    readGeneral(text);
    const int count = readProjectCount(text);
    if (count > 0) {
        projects_.resize(static_cast<std::size_t>(count));
        readProjects(text, projects_);
    }
    std::stable_sort(projects_.begin(), projects_.end(), [](const ProjectEntry& left, const ProjectEntry& right) {
        return left.lastOpened > right.lastOpened;
    });
    return true;
}

// Reads the values of the section [General], except the projects. Only this function recognises comments and sections.
void LauncherSettings::readGeneral(std::string_view text) {
    bool inGeneral = false;
    std::string key;
    std::string value;
    for (std::string_view line; nextSettingLine(text, line);) {
        if (line.starts_with('#') || line.starts_with(';')) continue;
        if (line.starts_with('[') && line.ends_with(']')) {
            inGeneral = line == kGeneralSection;
            continue;
        }
        if (!inGeneral || !splitSettingLine(line, key, value)) continue;
        if (key == kRefreshToken) refreshToken_ = value;
        if (key == kUserName) userName_ = value;
        if (key == kUserEmail) userEmail_ = value;
        if (key == kInstallPath) installPath_ = value;
        if (key == kDefaultLocation) defaultLocation_ = value;
        if (key == kLastAddedLocation) lastAddedLocation_ = value;
    }
}

bool LauncherSettings::save() {
    if (filePath_.empty()) return false;

    std::string text(kGeneralSection);
    text += '\n';
    addLine(text, kRefreshToken, refreshToken_);
    addLineUnlessEmpty(text, kUserName, userName_);
    addLineUnlessEmpty(text, kUserEmail, userEmail_);
    addLine(text, kInstallPath, installPath_);
    addLine(text, kDefaultLocation, defaultLocation_);
    addLine(text, kLastAddedLocation, lastAddedLocation_);
    addLine(text, kProjectsSize, std::to_string(projects_.size()));
    for (std::size_t i = 0; i < projects_.size(); ++i)
        addProject(text, i + 1, projects_[i]);

    createPrivateFolders(fs::path(filePath_).parent_path().string());
    const std::string temporary = filePath_ + ".tmp";
    if (!writePrivateFile(temporary, text) || !keepUnreadableFile()) return false;
    std::error_code error;
    fs::rename(temporary, filePath_, error);
    if (error) return false;
    syncFolder(fs::path(filePath_).parent_path().string());
    return true;
}

// Renames the settings file if load could not read it, for example because it belongs to another user. The file may
// contain a session and projects, so save must not replace it. False if the rename fails.
bool LauncherSettings::keepUnreadableFile() {
    if (!fileIsUnreadable_) return true;
    const std::string firstName = filePath_ + ".unreadable";
    std::string name = firstName;
    std::error_code error;
    for (int number = 2; fs::exists(fs::symlink_status(name, error)); ++number)
        name = firstName + "-" + std::to_string(number);
    fs::rename(filePath_, name, error);
    if (!error) fileIsUnreadable_ = false;
    return !error;
}

void LauncherSettings::clearSession() {
    refreshToken_.clear();
    userName_.clear();
    userEmail_.clear();
}

std::string LauncherSettings::installPath() const {
    return installPath_.empty() ? launcherDirectory() : installPath_;
}

void LauncherSettings::setProjects(const std::vector<ProjectEntry>& projects) {
    projects_ = projects;
}

void LauncherSettings::toggleFavorite(const std::string& path) {
    if (ProjectEntry* project = findProject(projects_, path)) project->favorite = !project->favorite;
}

void LauncherSettings::setFavorite(const std::string& path, bool favorite) {
    if (ProjectEntry* project = findProject(projects_, path)) project->favorite = favorite;
}
