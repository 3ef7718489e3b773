#pragma once

// Finds a font of the operating system for a character that the launcher's own font does not have. Main thread only.

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
    int faceIndex = 0; // index of the face in a font collection
};

// Returns an outline font that has the character: if there are several, the one most similar to the launcher's font.
// Null if there is none. The first call may take tens of milliseconds.
[[nodiscard]] std::unique_ptr<SystemFont> findSystemFont(std::uint32_t character);
