#pragma once

// What a host gives to the theme layer.

#include <cstdint>
#include <string>

struct UiIntegration {
    std::string fontPath;          // empty: Dear ImGui's built-in font
    std::uint64_t framesBuilt = 0; // since the start; growing cost is counted, not guessed
    std::uint64_t framesPresented = 0;
};
