#include "system/single_instance.h"

#include <memory>

#include <windows.h>

struct SingleInstanceGuard::Lock {
    explicit Lock(HANDLE handle)
        : mutex(handle) {}
    ~Lock() { CloseHandle(mutex); }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

    const HANDLE mutex;
};

SingleInstanceGuard::SingleInstanceGuard() {
    const HANDLE mutex = CreateMutexW(nullptr, FALSE, L"Local\\VoloLauncherSingleInstanceMutex");
    if (mutex == nullptr) return;
    anotherInstanceRuns_ = GetLastError() == ERROR_ALREADY_EXISTS;
    lock_ = std::make_unique<Lock>(mutex);
    if (anotherInstanceRuns_) release();
}

SingleInstanceGuard::~SingleInstanceGuard() = default;

void SingleInstanceGuard::release() {
    lock_.reset();
}
