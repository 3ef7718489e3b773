#include "system/disk.h"

#include <algorithm>
#include <filesystem>

#include <windows.h>

namespace fs = std::filesystem;

namespace {

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

bool syncOne(const fs::path& path) {
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_WRITE, kShareAll, nullptr, OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE) return true; // another program uses the file, which is not a disk error
    const bool synced = FlushFileBuffers(file) != 0;
    CloseHandle(file);
    return synced;
}

} // namespace

bool syncFile(const std::string& path) {
    return syncOne(path);
}

bool syncFiles(const std::vector<std::string>& files) {
    return std::all_of(files.begin(), files.end(), syncOne);
}

// The check includes io_error, because libstdc++ 12 reports a sharing violation of MoveFileEx as EIO.
bool isFileInUse(const std::error_code& error) {
    return error == std::errc::permission_denied || error == std::errc::io_error ||
           error == std::errc::directory_not_empty || error == std::errc::device_or_resource_busy;
}
