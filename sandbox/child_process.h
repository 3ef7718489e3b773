#pragma once

// Runs the launcher as a child of the sandbox, with the few system calls that this needs. One source per platform. One
// thread.

#include <chrono>
#include <optional>
#include <string>

class ChildProcess {
  public:
    ChildProcess() = default;
    ~ChildProcess(); // ends the child
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    // The child inherits environment and output. False when it could not be started.
    [[nodiscard]] bool start(const std::string& executable);

    // Waits at most `time` for the end of the child. Its exit status, or 128 plus the number of the signal that ended
    // it; nothing when it still runs.
    [[nodiscard]] std::optional<int> waitFor(std::chrono::milliseconds time);

    void end(); // asks it to end, and kills it 3 s later

  private:
#ifdef _WIN32
    void* process_ = nullptr;
#else
    int process_ = -1;
#endif
};

void setEnvironment(const char* name, const std::string& value);
void unsetEnvironment(const char* name);

// From this call on Ctrl-C and requests to end only make interrupted() true.
void rememberInterrupts();
[[nodiscard]] bool interrupted();

void allowOnlyOwner(const std::string& folder);  // mode 0700; nothing on Windows
[[nodiscard]] std::string makeTemporaryFolder(); // with mode 0700; empty on failure

// Ends every process whose executable is below the folder; on Windows every process that this program and its children
// have started.
void endProgramsBelow(const std::string& folder);
