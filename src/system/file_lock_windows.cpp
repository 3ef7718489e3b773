#include "system/file_lock.h"

#include <filesystem>

#include <windows.h>

FileLock::~FileLock() {
    if (file_ != -1) CloseHandle(reinterpret_cast<HANDLE>(file_)); // this also releases the lock
}

FileLock::Result FileLock::tryToTake(const std::string& path) {
    if (file_ == -1)
        file_ = reinterpret_cast<std::intptr_t>(
            CreateFileW(std::filesystem::path(path).c_str(), GENERIC_READ | GENERIC_WRITE,
                        FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_ALWAYS, 0, nullptr));
    if (file_ == -1) return Result::Impossible;
    OVERLAPPED firstByte{};
    if (LockFileEx(reinterpret_cast<HANDLE>(file_), LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0,
                   &firstByte))
        return Result::Taken;
    const DWORD error = GetLastError();
    return error == ERROR_LOCK_VIOLATION || error == ERROR_IO_PENDING ? Result::Held : Result::Impossible;
}
