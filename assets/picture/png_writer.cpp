#include "png_writer.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>

#include <miniz.h>

namespace {

// Returns the step to which differences are rounded. The error of a channel is at most half a step. Dark pixels have
// smaller steps, because errors are more visible there.
int stepAt(int level) {
    return level < 48 ? 2 : 4;
}

constexpr std::uint8_t kPaeth = 4;

int paeth(int left, int above, int corner) {
    const int guess = left + above - corner;
    const int toLeft = std::abs(guess - left), toAbove = std::abs(guess - above), toCorner = std::abs(guess - corner);
    if (toLeft <= toAbove && toLeft <= toCorner) return left;
    return toAbove <= toCorner ? above : corner;
}

std::string filtered(int width, int height, const std::vector<std::uint8_t>& pixels) {
    const int stride = width * 3;
    std::vector<std::uint8_t> written(pixels.size());
    const auto at = [&](int row, int index) {
        return row < 0 || index < 0 ? 0 : int{written[static_cast<std::size_t>(row * stride + index)]};
    };
    std::string result;
    result.reserve(pixels.size() + static_cast<std::size_t>(height));
    for (int row = 0; row < height; ++row) {
        result.push_back(static_cast<char>(kPaeth));
        for (int index = 0; index < stride; ++index) {
            const std::size_t here = static_cast<std::size_t>(row * stride + index);
            const int guess = paeth(at(row, index - 3), at(row - 1, index), at(row - 1, index - 3));
            const int difference = int{pixels[here]} - guess;
            const int step = stepAt(guess);
            const int rounded = (std::abs(difference) + step / 2) / step * (difference < 0 ? -step : step);
            written[here] = static_cast<std::uint8_t>(std::clamp(guess + rounded, 0, 255));
            result.push_back(static_cast<char>(int{written[here]} - guess));
        }
    }
    return result;
}

void appendNumber(std::string& bytes, std::uint32_t value) {
    for (const unsigned shift : {24u, 16u, 8u, 0u})
        bytes.push_back(static_cast<char>(value >> shift));
}

void appendChunk(std::string& file, const std::string& type, const std::string& data) {
    appendNumber(file, static_cast<std::uint32_t>(data.size()));
    const std::string checked = type + data;
    file += checked;
    appendNumber(file, static_cast<std::uint32_t>(mz_crc32(
                           MZ_CRC32_INIT, reinterpret_cast<const unsigned char*>(checked.data()), checked.size())));
}

} // namespace

bool writePng(const char* path, int width, int height, const std::vector<std::uint8_t>& pixels) {
    const std::string rows = filtered(width, height, pixels);
    mz_ulong size = mz_compressBound(static_cast<mz_ulong>(rows.size()));
    std::string packed(size, '\0');
    if (mz_compress2(reinterpret_cast<unsigned char*>(packed.data()), &size,
                     reinterpret_cast<const unsigned char*>(rows.data()), static_cast<mz_ulong>(rows.size()),
                     MZ_UBER_COMPRESSION) != MZ_OK)
        return false;
    packed.resize(size);

    std::string header;
    appendNumber(header, static_cast<std::uint32_t>(width));
    appendNumber(header, static_cast<std::uint32_t>(height));
    header += std::string("\x08\x02\x00\x00\x00", 5); // eight bits per channel; red, green, blue
    std::string file = "\x89PNG\r\n\x1a\n";
    appendChunk(file, "IHDR", header);
    appendChunk(file, "IDAT", packed);
    appendChunk(file, "IEND", {});
    std::FILE* output = std::fopen(path, "wb");
    if (!output) return false;
    const bool complete = std::fwrite(file.data(), 1, file.size(), output) == file.size();
    return std::fclose(output) == 0 && complete;
}
