#pragma once

// Starts other programs, without a shell. A started program gets the launcher's environment, default signals, and only
// the three standard descriptors. Programs without a slash in their name are looked up in PATH. Any thread.

#include <string>
#include <vector>

#include <sys/types.h>

struct SpawnResult {
    pid_t process = -1;
    int error = 0; // errno of a failed start
};

// The caller must wait for the process. Its output goes to `outputDescriptor`; input and errors are /dev/null.
[[nodiscard]] SpawnResult spawnProgram(const std::vector<std::string>& arguments, int outputDescriptor);

// Starts a program in a new session, connected to /dev/null. It outlives the launcher; a thread reaps it when it ends
// first. An empty `workingDirectory` means the launcher's. `executable`, when not empty, is the file to start instead
// of `arguments[0]`. Returns 0 or an errno.
[[nodiscard]] int spawnDetached(const std::vector<std::string>& arguments, const std::string& workingDirectory,
                                const std::string& executable = {});
