#pragma once

// Converts a path to UTF-8 text, the form in which the launcher stores paths. Any thread.

#include <filesystem>
#include <string>

[[nodiscard]] inline std::string pathText(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}
