#include "system/operating_system.h"

#include <cstdlib>
#include <ctime>
#include <filesystem>

#include <windows.h>
#include <shellapi.h>

#include "system/path_text.h"
#include "system/private_file.h"
#include "system/wide_text_windows.h"

namespace {

namespace fs = std::filesystem;

std::string inEnvironmentFolder(const char* variable, const char* name) {
    const fs::path folder = getEnvironmentString(variable);
    return folder.empty() ? std::string() : pathText(folder / name);
}

} // namespace

std::string launcherDirectory() {
    wchar_t path[4096];
    const DWORD length = GetModuleFileNameW(nullptr, path, static_cast<DWORD>(std::size(path)));
    if (length == 0 || length >= std::size(path)) return {};
    return pathText(fs::path(path, path + length).parent_path());
}

std::string userDataDirectory() {
    const std::string directory = inEnvironmentFolder("APPDATA", "ZANTOR");
    if (!directory.empty()) createPrivateFolders(directory);
    return directory;
}

std::string userDocumentsDirectory() {
    return inEnvironmentFolder("USERPROFILE", "Documents");
}

std::string getEnvironmentString(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr ? value : "";
}

std::int64_t currentTimeSeconds() {
    return std::time(nullptr);
}

void shellOpen(const std::string& target, const std::string& parameters) {
    ShellExecuteW(nullptr, L"open", widenBytes(target).c_str(), widenBytes(parameters).c_str(), nullptr, SW_SHOWNORMAL);
}

void openUrlInBrowser(const std::string& url) {
    if (!url.empty()) shellOpen(url, "");
}

void openInFileManager(const std::string& path) {
    if (path.empty()) return;
    std::error_code ignored;
    fs::create_directories(path, ignored);
    shellOpen("explorer", path);
}
