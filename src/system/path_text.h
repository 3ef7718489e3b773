#pragma once

// Converts a path to the UTF-8 text that the launcher stores paths in. Any thread.

#include <filesystem>
#include <string>

[[nodiscard]] inline std::string pathText(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}
