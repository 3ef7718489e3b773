#include "system/single_instance.h"

#include <windows.h>

SingleInstanceGuard::SingleInstanceGuard()
    : mutex_(CreateMutexW(nullptr, FALSE, L"Local\\VoloLauncherSingleInstanceMutex")) {
    if (mutex_ == nullptr || GetLastError() != ERROR_ALREADY_EXISTS) return;
    anotherInstanceRuns_ = true;
    release();
}

SingleInstanceGuard::~SingleInstanceGuard() {
    release();
}

void SingleInstanceGuard::release() {
    if (mutex_ != nullptr) CloseHandle(mutex_);
    mutex_ = nullptr;
}
