#pragma once

// Provides the window's icon in the sizes that desktops use. The build generates the source file from assets/icon.svg.

#include <vector>

struct UiIconPicture {
    int size;                    // width and height, pixels
    const unsigned char* pixels; // red, green, blue, alpha; never freed
};

// Returns the icon's pictures. Empty if the build had no tool to render the icon.
[[nodiscard]] std::vector<UiIconPicture> uiIconPictures();
