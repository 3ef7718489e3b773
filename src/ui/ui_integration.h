#pragma once

// What the host gives to the theme layer and to tests.

#include <cstdint>
#include <string>

struct UiIntegration {
    std::string fontPath;          // empty: Dear ImGui's built-in font
    std::uint64_t framesBuilt = 0; // since the start; tests read the counters
    std::uint64_t framesPresented = 0;
};
