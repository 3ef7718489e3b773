#pragma once

// Runs the launcher as a child process of the sandbox, and contains the sandbox's other operating-system functions. One
// source per platform. Use it on one thread.

#include <chrono>
#include <optional>
#include <string>

class ChildProcess {
  public:
    ChildProcess() = default;
    ~ChildProcess(); // ends the child
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    // Starts the child, which inherits environment and output. False if it cannot be started.
    [[nodiscard]] bool start(const std::string& executable);

    // Waits at most `time` for the end of the child. Returns the child's exit status, or 128 plus the number of the
    // signal that ended the child. Returns nullopt if the child still runs.
    [[nodiscard]] std::optional<int> waitFor(std::chrono::milliseconds time);

    void end(); // asks the child to end, and kills it 3 s later if it still runs

  private:
#ifdef _WIN32
    void* process_ = nullptr;
#else
    int process_ = -1;
#endif
};

void setEnvironment(const char* name, const std::string& value);
void unsetEnvironment(const char* name);

// After this call, Ctrl-C and a termination request (SIGTERM on Linux) do not end this program. Instead interrupted()
// returns true.
void rememberInterrupts();
[[nodiscard]] bool interrupted();

void allowOnlyOwner(const std::string& folder);  // sets mode 0700; does nothing on Windows
[[nodiscard]] std::string makeTemporaryFolder(); // with mode 0700; empty on failure

// Ends all processes whose executable is below the folder. On Windows, ends all processes that this program and its
// children have started.
void endProgramsBelow(const std::string& folder);
