#pragma once

// The launcher as a child of the sandbox. One source per platform. One thread.

#include <chrono>
#include <optional>
#include <string>
#include <vector>

class ChildProcess {
  public:
    ChildProcess() = default;
    ~ChildProcess(); // ends it
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    // With the environment and the output of this program. False: it could not be started.
    [[nodiscard]] bool start(const std::string& executable);

    // Its exit status, 128 and more when a signal ended it; nothing when it still runs after that time.
    std::optional<int> waitFor(std::chrono::milliseconds time);

    void end(); // asks first, kills after a while

  private:
#ifdef _WIN32
    void* process_ = nullptr;
#else
    int process_ = -1;
#endif
};

void setEnvironment(const char* name, const std::string& value);
void unsetEnvironment(const char* name);

// From here on Ctrl-C and a request to end are remembered instead of ending this program.
void rememberInterrupts();
bool interrupted();

void allowOnlyOwner(const std::string& folder); // where the platform has such modes
std::string makeTemporaryFolder();              // its owner's alone; empty: none could be made

// Every process whose executable lies there; on Windows all that this program and its children have started.
void endProgramsBelow(const std::string& folder);
