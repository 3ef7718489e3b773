#pragma once

// The launcher as a child of the sandbox. The one place of the sandbox that needs the operating system. One thread.

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
    int process_ = -1;
};

void setEnvironment(const char* name, const std::string& value);
void unsetEnvironment(const char* name);

// From here on Ctrl-C and a request to end are remembered instead of ending this program.
void rememberInterrupts();
bool interrupted();

void allowOnlyOwner(const std::string& folder);   // mode 0700
std::string makeTemporaryFolder();                // its owner's alone; empty: none could be made
void endProgramsBelow(const std::string& folder); // every process whose executable lies there
