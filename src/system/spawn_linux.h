#pragma once

// Starting other programs, for the Linux sources of this folder. A started program gets its arguments as they are
// (never through a shell), the launcher's environment, default signals, and no descriptor of the launcher beyond the
// three standard ones. Programs without a slash in their name are looked up in PATH. Any thread.

#include <string>
#include <vector>

#include <sys/types.h>

struct SpawnResult {
    pid_t process = -1;
    int error = 0; // errno of what went wrong, in the launcher or in the child before it became the program
};

// The caller waits for the process. Its output goes to `outputDescriptor`; input and messages are /dev/null.
[[nodiscard]] SpawnResult spawnProgram(const std::vector<std::string>& arguments, int outputDescriptor);

// In a session of its own with nothing but /dev/null, in `workingDirectory` unless that is empty. Outlives the
// launcher, and is reaped when it ends while the launcher still runs. `arguments[0]` is what the program is told its
// name is; `executable` overrides the file to start. Returns 0 or an errno.
[[nodiscard]] int spawnDetached(const std::vector<std::string>& arguments, const std::string& workingDirectory,
                                const std::string& executable = {});
