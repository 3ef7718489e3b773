#include "sandbox/child_process.h"

#include <atomic>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <optional>
#include <random>
#include <string>
#include <system_error>

#include <windows.h>

namespace {

namespace fs = std::filesystem;

std::atomic<bool> interruptCame{false};

// Returns the job object in which all children and their children run. Windows ends these processes when the last
// handle of the job object is closed, at the latest when this program ends.
HANDLE job() {
    static const HANDLE made = [] {
        const HANDLE one = CreateJobObjectW(nullptr, nullptr);
        JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
        limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
        SetInformationJobObject(one, JobObjectExtendedLimitInformation, &limits, sizeof limits);
        return one;
    }();
    return made;
}

BOOL CALLBACK askToClose(HWND window, LPARAM process) {
    DWORD owner = 0;
    GetWindowThreadProcessId(window, &owner);
    if (owner == static_cast<DWORD>(process)) PostMessageW(window, WM_CLOSE, 0, 0);
    return TRUE;
}

} // namespace

ChildProcess::~ChildProcess() {
    end();
}

bool ChildProcess::start(const std::string& executable) {
    std::wstring commandLine = L'"' + fs::path(executable).wstring() + L'"';
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process{};
    if (!CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, TRUE, CREATE_SUSPENDED, nullptr, nullptr,
                        &startup, &process)) {
        return false;
    }
    AssignProcessToJobObject(job(), process.hProcess);
    ResumeThread(process.hThread);
    CloseHandle(process.hThread);
    process_ = process.hProcess;
    return true;
}

std::optional<int> ChildProcess::waitFor(std::chrono::milliseconds time) {
    if (process_ == nullptr || WaitForSingleObject(process_, static_cast<DWORD>(time.count())) != WAIT_OBJECT_0)
        return std::nullopt;
    DWORD status = 0;
    GetExitCodeProcess(process_, &status);
    CloseHandle(process_);
    process_ = nullptr;
    return static_cast<int>(status);
}

void ChildProcess::end() {
    if (process_ == nullptr) return;
    EnumWindows(&askToClose, static_cast<LPARAM>(GetProcessId(process_)));
    if (waitFor(std::chrono::seconds(3))) return;
    TerminateProcess(process_, 1);
    (void)waitFor(std::chrono::seconds(3));
}

// _putenv_s changes the environment of the C library and the one that children inherit.
void setEnvironment(const char* name, const std::string& value) {
    _putenv_s(name, value.c_str());
}

void unsetEnvironment(const char* name) {
    _putenv_s(name, "");
}

void rememberInterrupts() {
    for (const int signal : {SIGINT, SIGTERM, SIGBREAK})
        std::signal(signal, [](int) { interruptCame = true; });
}

bool interrupted() {
    return interruptCame;
}

void allowOnlyOwner(const std::string&) {} // not needed: folders inherit the user profile's permissions

std::string makeTemporaryFolder() {
    std::error_code error;
    const fs::path folder = fs::temp_directory_path(error) / ("volo-sandbox-" + std::to_string(std::random_device{}()));
    return fs::create_directory(folder, error) ? folder.string() : std::string();
}

void endProgramsBelow(const std::string&) {
    TerminateJobObject(job(), 1);
}
