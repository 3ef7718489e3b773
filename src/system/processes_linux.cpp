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

// Up to the first zero byte, or all; empty when the process has ended meanwhile.
std::string firstText(const fs::path& processFile) {
    std::ifstream file(processFile, std::ios::binary);
    std::string text;
    std::getline(file, text, '\0');
    return text;
}

// `stat` reads "4711 (name) S ...". The name may hold anything, parentheses too, and a program may have renamed itself,
// so the name that it was started by is asked as well. What runs under Wine has a Windows path there.
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

    // A relative name is meant from here, not from the directory that the editor starts in.
    std::error_code ignored;
    const int error = spawnDetached(arguments, workingDirectory, fs::absolute(executable, ignored).string());
    if (error == 0) return true;
    errorText = startFailureText(error);
    return false;
}
