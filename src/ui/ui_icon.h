#pragma once

// The window's icon in the sizes that desktops ask for. Defined in a source that the build makes of assets/icon.svg.

#include <vector>

struct UiIconPicture {
    int size;                    // width and height, pixels
    const unsigned char* pixels; // red, green, blue, alpha; static
};

// None where the build had no tool to draw it.
std::vector<UiIconPicture> uiIconPictures();
