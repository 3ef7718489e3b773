#pragma once

// Writes a picture as a PNG that is small at the price of a few levels of exactness: what each pixel differs from its
// prediction by is rounded, and predictions are made from what was written, so that errors do not add up.

#include <cstdint>
#include <vector>

// Three bytes per pixel: red, green, blue. False when the file could not be written.
[[nodiscard]] bool writePng(const char* path, int width, int height, const std::vector<std::uint8_t>& pixels);
