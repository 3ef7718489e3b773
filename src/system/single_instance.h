#pragma once

// Allows only one running launcher: per user on Linux, per logon session on Windows. The operating system releases the
// guard when the process ends. Main thread only. main() ends the program at once when another instance runs.

#include <memory>

class SingleInstanceGuard {
  public:
    SingleInstanceGuard();
    ~SingleInstanceGuard();
    SingleInstanceGuard(const SingleInstanceGuard&) = delete;
    SingleInstanceGuard& operator=(const SingleInstanceGuard&) = delete;

    // True if another instance held the guard when this object was created. False also if the guard could not be
    // created, so that this error does not prevent a start.
    [[nodiscard]] bool anotherInstanceRuns() const { return anotherInstanceRuns_; }

    // Lets the next instance start. Call it before the workers are joined, so that the next instance need not wait.
    void release();

  private:
    struct Lock; // the platform's handle; its destructor releases the guard

    bool anotherInstanceRuns_ = false;
    std::unique_ptr<Lock> lock_; // null: not held
};
