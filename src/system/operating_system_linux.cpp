#include "system/operating_system.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <string_view>

#include "system/private_file.h"
#include "system/spawn_linux.h"

namespace {

namespace fs = std::filesystem;

// Returns the user's configuration directory. Ignores a relative XDG_CONFIG_HOME, as the XDG base directory rules
// require.
fs::path configHome() {
    fs::path configured = getEnvironmentString("XDG_CONFIG_HOME");
    if (configured.is_absolute()) return configured;
    const fs::path home = getEnvironmentString("HOME");
    return home.empty() ? fs::path() : home / ".config";
}

// Returns the path in a line of user-dirs.dirs such as XDG_DOCUMENTS_DIR="$HOME/Papers" or
// XDG_DOCUMENTS_DIR="/mnt/papers". Empty for any other line.
std::string documentsLineValue(std::string_view line) {
    constexpr std::string_view blanks = " \t";
    const auto skip = [&](std::string_view expected) {
        line.remove_prefix(std::min(line.find_first_not_of(blanks), line.size()));
        if (!line.starts_with(expected)) return false;
        line.remove_prefix(expected.size());
        return true;
    };
    if (!skip("XDG_DOCUMENTS_DIR") || !skip("=") || !skip("\"")) return {};

    std::string value;
    if (line.starts_with("$HOME/")) {
        value = getEnvironmentString("HOME");
        line.remove_prefix(std::string_view("$HOME").size());
    }
    for (std::size_t i = 0; i < line.size() && line[i] != '"'; ++i) {
        if (line[i] == '\\' && i + 1 < line.size()) ++i;
        value += line[i];
    }
    return fs::path(value).is_absolute() ? value : std::string();
}

} // namespace

std::string launcherDirectory() {
    std::error_code ignored;
    return fs::read_symlink("/proc/self/exe", ignored).parent_path().string();
}

std::string userDataDirectory() {
    const std::string applicationData = getEnvironmentString("APPDATA");
    const fs::path base = applicationData.empty() ? configHome() : fs::path(applicationData);
    if (base.empty()) return {};
    std::string directory = (base / "ZANTOR").string();
    createPrivateFolders(directory);
    return directory;
}

std::string userDocumentsDirectory() {
    const fs::path profile = getEnvironmentString("USERPROFILE");
    if (!profile.empty()) return (profile / "Documents").string();

    std::string documents;
    std::ifstream userDirectories(configHome() / "user-dirs.dirs");
    for (std::string line; std::getline(userDirectories, line);) {
        const std::string value = documentsLineValue(line);
        if (!value.empty()) documents = value;
    }
    if (!documents.empty()) return documents;

    const fs::path home = getEnvironmentString("HOME");
    return home.empty() ? std::string() : (home / "Documents").string();
}

std::string getEnvironmentString(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr ? value : "";
}

std::int64_t currentTimeSeconds() {
    return std::time(nullptr);
}

// Ignores the parameters, because xdg-open accepts only a target.
void shellOpen(const std::string& target, const std::string& /*parameters*/) {
    (void)spawnDetached({"xdg-open", target}, "");
}

void openUrlInBrowser(const std::string& url) {
    if (!url.empty()) shellOpen(url, "");
}

void openInFileManager(const std::string& path) {
    if (path.empty()) return;
    std::error_code ignored;
    fs::create_directories(path, ignored);
    shellOpen(path, "");
}
