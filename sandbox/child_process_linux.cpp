#include "sandbox/child_process.h"

#include <atomic>
#include <cctype>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>
#include <thread>

#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

std::atomic<bool> interruptCame{false};

} // namespace

ChildProcess::~ChildProcess() {
    end();
}

bool ChildProcess::start(const std::string& executable) {
    char* argv[] = {const_cast<char*>(executable.c_str()), nullptr};
    return ::posix_spawn(&process_, executable.c_str(), nullptr, nullptr, argv, environ) == 0;
}

std::optional<int> ChildProcess::waitFor(std::chrono::milliseconds time) {
    const auto end = std::chrono::steady_clock::now() + time;
    while (process_ > 0) {
        int status = 0;
        if (::waitpid(process_, &status, WNOHANG) == process_) {
            process_ = -1;
            return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
        }
        if (std::chrono::steady_clock::now() > end) break;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return std::nullopt;
}

void ChildProcess::end() {
    for (const int signal : {SIGTERM, SIGKILL}) {
        if (process_ <= 0) return;
        ::kill(process_, signal);
        (void)waitFor(std::chrono::seconds(3));
    }
}

void setEnvironment(const char* name, const std::string& value) {
    ::setenv(name, value.c_str(), 1);
}

void unsetEnvironment(const char* name) {
    ::unsetenv(name);
}

void rememberInterrupts() {
    struct sigaction action {};
    action.sa_handler = [](int) { interruptCame = true; };
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        ::sigaction(signal, &action, nullptr);
    std::signal(SIGPIPE, SIG_IGN);
}

bool interrupted() {
    return interruptCame;
}

void allowOnlyOwner(const std::string& folder) {
    ::chmod(folder.c_str(), 0700);
}

std::string makeTemporaryFolder() {
    std::error_code error;
    std::string name = (fs::temp_directory_path(error) / "volo-sandbox-XXXXXX").string();
    return ::mkdtemp(name.data()) != nullptr ? name : std::string();
}

void endProgramsBelow(const std::string& folder) {
    std::error_code error;
    for (const fs::directory_entry& process : fs::directory_iterator("/proc", error)) {
        const std::string id = process.path().filename().string();
        if (std::isdigit(static_cast<unsigned char>(id.front())) == 0) continue;
        const std::string executable = fs::read_symlink(process.path() / "exe", error).string();
        if (!error && executable.starts_with(folder + "/")) ::kill(std::atoi(id.c_str()), SIGTERM);
    }
}
