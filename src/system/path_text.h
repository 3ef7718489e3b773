#pragma once

// Paths are held as UTF-8 text and turned into path objects at each use. This is the way back.

#include <filesystem>
#include <string>

inline std::string pathText(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}
