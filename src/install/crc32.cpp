// Replaces mz_crc32 of miniz 3.1, which needs almost half of the time of an extraction. This version processes sixteen
// bytes per step instead of one. It has a table for each of the sixteen positions.

#include <array>
#include <cstdint>

#include <miniz.h>

static constexpr std::size_t kPlaces = 16;

// kTables[n][byte] is the contribution of `byte` to the checksum when n more bytes follow it.
static constexpr auto kTables = [] {
    std::array<std::array<std::uint32_t, 256>, kPlaces> tables{};
    for (std::uint32_t byte = 0; byte < 256; ++byte) {
        std::uint32_t remainder = byte;
        for (int bit = 0; bit < 8; ++bit)
            remainder = remainder >> 1 ^ (remainder & 1 ? 0xEDB88320u : 0u);
        tables[0][byte] = remainder;
    }
    for (std::size_t place = 1; place < kPlaces; ++place) {
        for (std::size_t byte = 0; byte < 256; ++byte) {
            const std::uint32_t before = tables[place - 1][byte];
            tables[place][byte] = before >> 8 ^ tables[0][before & 0xFF];
        }
    }
    return tables;
}();

extern "C" mz_ulong mz_crc32(mz_ulong crc, const mz_uint8* data, size_t size) {
    std::uint32_t remainder = ~static_cast<std::uint32_t>(crc);
    for (; size >= kPlaces; size -= kPlaces, data += kPlaces) {
        std::uint32_t next = 0;
        for (std::size_t i = 0; i < 4; ++i)
            next ^= kTables[kPlaces - 1 - i][data[i] ^ (remainder >> 8 * i & 0xFF)];
        for (std::size_t i = 4; i < kPlaces; ++i)
            next ^= kTables[kPlaces - 1 - i][data[i]];
        remainder = next;
    }
    for (; size > 0; --size, ++data)
        remainder = remainder >> 8 ^ kTables[0][(remainder ^ *data) & 0xFF];
    return ~remainder & 0xFFFFFFFFu;
}
