#pragma once

// The operating system's fonts, asked for one character at a time.

#include <cstdint>
#include <memory>
#include <span>

// A font file in memory, released with the object.
struct SystemFont {
    SystemFont() = default;
    virtual ~SystemFont() = default;
    SystemFont(const SystemFont&) = delete;
    SystemFont& operator=(const SystemFont&) = delete;

    std::span<const unsigned char> file;
    int faceIndex = 0; // in a collection
};

// An outline font that has the character, the best match first; null when the system has none. The first call may take
// tens of milliseconds.
[[nodiscard]] std::unique_ptr<SystemFont> findSystemFont(std::uint32_t character);
