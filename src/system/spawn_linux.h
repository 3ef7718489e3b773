#pragma once

// Starts other programs, without a shell. A started program gets the launcher's environment, default signal handlers
// and only the three standard descriptors. A program name without a slash is searched in PATH. Any thread.

#include <string>
#include <vector>

#include <sys/types.h>

struct SpawnResult {
    pid_t process = -1;
    int error = 0; // errno of a failed start
};

// Starts a program whose output is `outputDescriptor`. Its input and error output are /dev/null. The caller must wait
// for the process.
[[nodiscard]] SpawnResult spawnProgram(const std::vector<std::string>& arguments, int outputDescriptor);

// Starts a program in a new session, with /dev/null as input and output. The program may outlive the launcher. If it
// ends before the launcher, a thread reaps it. If `workingDirectory` is empty, the program gets the launcher's working
// directory. `executable` is the file to start; empty: `arguments[0]`. Returns 0 or an errno.
[[nodiscard]] int spawnDetached(const std::vector<std::string>& arguments, const std::string& workingDirectory,
                                const std::string& executable = {});
