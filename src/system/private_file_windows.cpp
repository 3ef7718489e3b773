#include "system/private_file.h"

#include <cstdio>
#include <filesystem>

#include <io.h>

// Sets no access rules: on Windows, folders and files inherit those of the user's profile folder.
void createPrivateFolders(const std::string& path) {
    std::error_code ignored;
    std::filesystem::create_directories(path, ignored);
}

// Opens the file in text mode ("t"), which writes a line feed as carriage return and line feed.
bool writePrivateFile(const std::string& path, const std::string& text) {
    std::FILE* file = _wfopen(std::filesystem::path(path).c_str(), L"wt");
    if (file == nullptr) return false;
    const bool written = std::fwrite(text.data(), 1, text.size(), file) == text.size() && std::fflush(file) == 0 &&
                         _commit(_fileno(file)) == 0;
    return std::fclose(file) == 0 && written;
}

void syncFolder(const std::string& /*path*/) {}
