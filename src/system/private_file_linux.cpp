#include "system/private_file.h"

#include <cerrno>
#include <filesystem>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

bool writeAll(int file, const std::string& text) {
    std::size_t written = 0;
    while (written < text.size()) {
        const ssize_t count = ::write(file, text.data() + written, text.size() - written);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return false;
        written += static_cast<std::size_t>(count);
    }
    return true;
}

} // namespace

void createPrivateFolders(const std::string& path) {
    std::filesystem::path folder;
    for (const std::filesystem::path& part : std::filesystem::path(path)) {
        folder /= part;
        ::mkdir(folder.c_str(), 0700);
    }
}

bool writePrivateFile(const std::string& path, const std::string& text) {
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (file < 0) return false;
    // Set the mode explicitly: open() sets it only for a new file.
    const bool written = ::fchmod(file, 0600) == 0 && writeAll(file, text) && ::fsync(file) == 0;
    return ::close(file) == 0 && written;
}

void syncFolder(const std::string& path) {
    const int folder = ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder < 0) return;
    ::fsync(folder);
    ::close(folder);
}
