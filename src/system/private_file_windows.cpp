#include "system/private_file.h"

#include <cstdio>
#include <filesystem>

#include <io.h>

// Who may read is inherited from the folder: the user's own profile.

void createPrivateFolders(const std::string& path) {
    std::error_code ignored;
    std::filesystem::create_directories(path, ignored);
}

// In text mode: a line feed arrives as carriage return and line feed.
bool writePrivateFile(const std::string& path, const std::string& text) {
    std::FILE* file = _wfopen(std::filesystem::path(path).c_str(), L"wt");
    if (file == nullptr) return false;
    const bool written = std::fwrite(text.data(), 1, text.size(), file) == text.size() && std::fflush(file) == 0 &&
                         _commit(_fileno(file)) == 0;
    return std::fclose(file) == 0 && written;
}
