#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

#include "system/operating_system.h"
#include "system/spawn_linux.h"
#include "system/system_texts.h"

namespace {

namespace fs = std::filesystem;

bool namesEditor(std::string_view program) {
    constexpr std::string_view editor = "editor.exe";
    return std::equal(program.begin(), program.end(), editor.begin(), editor.end(),
                      [](char left, char right) { return std::tolower(static_cast<unsigned char>(left)) == right; });
}

// Returns the file's text up to the first zero byte. Empty if the process has ended.
std::string firstText(const fs::path& processFile) {
    std::ifstream file(processFile, std::ios::binary);
    std::string text;
    std::getline(file, text, '\0');
    return text;
}

// True if a process is an editor and not a zombie. Its `stat` file starts with its identifier, name and state, for
// example "4711 (name) S". The name may contain parentheses. A process can change this name, so the program name in its
// command line is also compared. Under Wine the command line starts with a Windows path.
bool isLivingEditor(const fs::path& process) {
    const std::string stat = firstText(process / "stat");
    const std::size_t open = stat.find('(');
    const std::size_t close = stat.rfind(')');
    if (open == std::string::npos || close == std::string::npos || close + 2 >= stat.size()) return false;
    const char state = stat[close + 2];
    if (state == 'Z' || state == 'X') return false;
    if (namesEditor(std::string_view(stat).substr(open + 1, close - open - 1))) return true;

    const std::string started = firstText(process / "cmdline");
    return namesEditor(std::string_view(started).substr(started.find_last_of("/\\") + 1));
}

} // namespace

bool isEditorRunning() {
    std::error_code error;
    fs::directory_iterator process("/proc", error);
    for (const fs::directory_iterator end; !error && process != end; process.increment(error)) {
        const std::string name = process->path().filename().string();
        if (std::isdigit(static_cast<unsigned char>(name.front())) != 0 && isLivingEditor(process->path())) return true;
    }
    return false;
}

bool launchEditorProcess(const std::string& executable, const std::string& argument,
                         const std::string& workingDirectory, std::string& errorText) {
    if (executable.empty()) {
        errorText = kNoExecutableText;
        return false;
    }
    std::vector<std::string> arguments = {executable};
    if (!argument.empty()) arguments.push_back(argument);

    // Make the path absolute: a relative path is relative to the launcher's working directory, not to the editor's.
    std::error_code ignored;
    const int error = spawnDetached(arguments, workingDirectory, fs::absolute(executable, ignored).string());
    if (error == 0) return true;
    errorText = startFailureText(error);
    return false;
}
