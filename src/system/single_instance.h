#pragma once

// The guard that keeps the launcher to one instance per logon session. The operating system releases it when the
// process dies, however it dies. Main thread only; one source per platform.

class SingleInstanceGuard {
  public:
    SingleInstanceGuard();
    ~SingleInstanceGuard();
    SingleInstanceGuard(const SingleInstanceGuard&) = delete;
    SingleInstanceGuard& operator=(const SingleInstanceGuard&) = delete;

    // True when another instance held the guard at construction. False also when no guard could be made at all: that
    // never stops the launcher.
    [[nodiscard]] bool anotherInstanceRuns() const { return anotherInstanceRuns_; }

    // Lets the next instance start. Called before the workers are joined, so a new instance need not wait for them.
    void release();

  private:
    bool anotherInstanceRuns_ = false;
#ifdef _WIN32
    void* mutex_ = nullptr;
#else
    int lockFile_ = -1;
#endif
};
