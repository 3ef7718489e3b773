#include <cwchar>

#include <windows.h>
#include <tlhelp32.h>

#include "system/operating_system.h"
#include "system/system_texts.h"
#include "system/wide_text_windows.h"

bool isEditorRunning() {
    const HANDLE processes = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    if (processes == INVALID_HANDLE_VALUE) return false;
    PROCESSENTRY32W process{};
    process.dwSize = sizeof process;
    bool found = false;
    for (BOOL more = Process32FirstW(processes, &process); more && !found; more = Process32NextW(processes, &process))
        found = _wcsicmp(process.szExeFile, L"editor.exe") == 0;
    CloseHandle(processes);
    return found;
}

bool launchEditorProcess(const std::string& executable, const std::string& argument,
                         const std::string& workingDirectory, std::string& errorText) {
    if (executable.empty()) {
        errorText = kNoExecutableText;
        return false;
    }
    std::wstring commandLine = quoteCommandLineArgument(executable);
    if (!argument.empty()) commandLine += L' ' + quoteCommandLineArgument(argument);
    const std::wstring directory = widenBytes(workingDirectory);

    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process{};
    if (!CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, FALSE,
                        DETACHED_PROCESS | CREATE_NEW_PROCESS_GROUP, nullptr,
                        directory.empty() ? nullptr : directory.c_str(), &startup, &process)) {
        errorText = startFailureText(GetLastError());
        return false;
    }
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return true;
}
