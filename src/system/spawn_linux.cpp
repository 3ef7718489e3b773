#include "system/spawn_linux.h"

#include <cerrno>
#include <csignal>
#include <future>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

struct SpawnOptions {
    std::string executable;       // empty: the first argument
    std::string workingDirectory; // empty: the launcher's
    int outputDescriptor = -1;    // -1: /dev/null
    bool newSession = false;
};

SpawnResult spawn(const std::vector<std::string>& arguments, const SpawnOptions& options) {
    std::vector<char*> argv;
    argv.reserve(arguments.size() + 1);
    for (const std::string& argument : arguments)
        argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    if (options.outputDescriptor >= 0) {
        // Do this first: the descriptor may be 0 or 2, which the actions below replace.
        posix_spawn_file_actions_adddup2(&actions, options.outputDescriptor, STDOUT_FILENO);
    } else {
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    }
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1);
    if (!options.workingDirectory.empty()) {
        posix_spawn_file_actions_addchdir_np(&actions, options.workingDirectory.c_str());
    }

    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t signals;
    sigfillset(&signals);
    posix_spawnattr_setsigdefault(&attributes, &signals);
    sigemptyset(&signals);
    posix_spawnattr_setsigmask(&attributes, &signals);
    const int session = options.newSession ? POSIX_SPAWN_SETSID : 0;
    posix_spawnattr_setflags(&attributes, static_cast<short>(POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK | session));

    const std::string& executable = options.executable.empty() ? arguments.front() : options.executable;
    SpawnResult result;
    result.error = posix_spawnp(&result.process, executable.c_str(), &actions, &attributes, argv.data(), environ);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    return result;
}

} // namespace

SpawnResult spawnProgram(const std::vector<std::string>& arguments, int outputDescriptor) {
    SpawnOptions options;
    options.outputDescriptor = outputDescriptor;
    return spawn(arguments, options);
}

// A thread waits for the child, so that the child does not remain a zombie. Ignoring SIGCHLD instead would make all
// other calls of waitpid() in this process fail.
int spawnDetached(const std::vector<std::string>& arguments, const std::string& workingDirectory,
                  const std::string& executable) {
    std::promise<int> promise;
    std::future<int> started = promise.get_future();
    SpawnOptions options;
    options.executable = executable;
    options.workingDirectory = workingDirectory;
    options.newSession = true;
    try {
        std::thread([promise = std::move(promise), arguments, options]() mutable {
            const SpawnResult result = spawn(arguments, options);
            promise.set_value(result.error);
            if (result.error != 0) return;
            while (::waitpid(result.process, nullptr, 0) < 0 && errno == EINTR) {
            }
        }).detach();
    } catch (const std::system_error& noThread) {
        return noThread.code().value();
    }
    return started.get();
}
