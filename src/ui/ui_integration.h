#pragma once

// Contains the data that the host passes to the theme layer and to tests.

#include <cstdint>
#include <string>

struct UiIntegration {
    std::string fontPath;          // empty: Dear ImGui's built-in font
    std::uint64_t framesBuilt = 0; // tests read the two counters
    std::uint64_t framesPresented = 0;
};
