#pragma once

// Keeps the launcher to one running instance: per user on Linux, per logon session on Windows. The operating system
// releases the guard when the process dies. Main thread only.

#include <memory>

class SingleInstanceGuard {
  public:
    SingleInstanceGuard();
    ~SingleInstanceGuard();
    SingleInstanceGuard(const SingleInstanceGuard&) = delete;
    SingleInstanceGuard& operator=(const SingleInstanceGuard&) = delete;

    // True when another instance held the guard at construction. False when the guard could not be made at all: that
    // never stops the launcher.
    [[nodiscard]] bool anotherInstanceRuns() const { return anotherInstanceRuns_; }

    // Lets the next instance start. Called before the workers are joined, so that it need not wait for them.
    void release();

  private:
    struct Lock; // the platform's handle; its destructor releases the guard

    bool anotherInstanceRuns_ = false;
    std::unique_ptr<Lock> lock_; // null: not held
};
