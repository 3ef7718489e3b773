#include "signin/picture_file.h"

#include "system/whole_file.h"

#define STB_IMAGE_IMPLEMENTATION
#define STB_IMAGE_STATIC
#define STBI_NO_STDIO
#define STBI_ONLY_PNG
#define STBI_ONLY_JPEG
#include <stb_image.h>

namespace {

constexpr std::size_t kLargestFile = 256u << 20; // stb_image takes the size as an int

} // namespace

DecodedPicture decodePictureFile(const std::string& path) {
    std::string file;
    DecodedPicture picture;
    if (!readWholeFile(path, file) || file.size() > kLargestFile) return picture;
    unsigned char* pixels =
        stbi_load_from_memory(reinterpret_cast<const unsigned char*>(file.data()), static_cast<int>(file.size()),
                              &picture.width, &picture.height, nullptr, 4);
    picture.pixels = {pixels, stbi_image_free};
    if (picture.width <= 0 || picture.height <= 0) picture.pixels.reset();
    return picture;
}
