#pragma once

// Decodes a picture file into four bytes per pixel: red, green, blue, alpha. Any thread.

#include <memory>
#include <string>

struct DecodedPicture {
    int width = 0;
    int height = 0;
    std::unique_ptr<unsigned char, void (*)(void*)> pixels{nullptr, nullptr}; // null: no usable picture
};

[[nodiscard]] DecodedPicture decodePictureFile(const std::string& path);
