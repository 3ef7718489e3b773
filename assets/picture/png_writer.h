#pragma once

// Writes a picture as a small PNG with slightly inexact colours. The difference of each pixel from its prediction is
// rounded. The prediction uses the rounded pixels, so that the errors do not accumulate.

#include <cstdint>
#include <vector>

// `pixels` has three bytes per pixel: red, green, blue. False if the file cannot be written.
[[nodiscard]] bool writePng(const char* path, int width, int height, const std::vector<std::uint8_t>& pixels);
