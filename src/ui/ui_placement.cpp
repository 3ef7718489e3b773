#include "ui/ui_placement.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <fstream>

namespace {

constexpr int kFarthest = 100'000; // larger than any desktop; the sum of two does not overflow an int
constexpr std::size_t kMaxFileBytes = 128;
constexpr std::array kZooms = {80, 90, 100, 110, 125, 150, 175, 200}; // percent

std::int64_t overlap(int a, int aLength, int b, int bLength) {
    return std::max(0, std::min(a + aLength, b + bLength) - std::max(a, b));
}

} // namespace

std::optional<WindowPlacement> parsePlacement(std::string_view text) {
    std::array<int, 7> numbers{};
    numbers.back() = 100;
    const char* at = text.data();
    const char* const end = at + text.size();
    const std::size_t count = text.starts_with("1 ") ? 6 : 7;
    for (std::size_t i = 0; i < count; ++i) {
        if (i > 0 && (at == end || *at++ != ' ')) return std::nullopt;
        const auto [next, error] = std::from_chars(at, end, numbers[i]);
        if (error != std::errc{}) return std::nullopt;
        at = next;
    }
    if (std::string_view(at, static_cast<std::size_t>(end - at)) != "\n") return std::nullopt;

    const auto [version, x, y, width, height, maximized, zoom] = numbers;
    const auto within = [](int value, int lowest) { return value >= lowest && value <= kFarthest; };
    if ((version != 1 && version != 2) || !within(x, -kFarthest) || !within(y, -kFarthest) || !within(width, 1) ||
        !within(height, 1) || (maximized != 0 && maximized != 1) || std::ranges::find(kZooms, zoom) == kZooms.end())
        return std::nullopt;
    return WindowPlacement{x, y, width, height, maximized == 1, zoom};
}

std::string formatPlacement(const WindowPlacement& placement) {
    std::string text = "2";
    for (const int number :
         {placement.x, placement.y, placement.width, placement.height, placement.maximized ? 1 : 0, placement.zoom})
        text += ' ' + std::to_string(number);
    return text + '\n';
}

std::optional<WindowPlacement> readPlacement(const std::filesystem::path& file) {
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(file, ignored)) return std::nullopt;
    std::ifstream stream(file, std::ios::binary);
    std::array<char, kMaxFileBytes> text{};
    stream.read(text.data(), text.size());
    return parsePlacement({text.data(), static_cast<std::size_t>(stream.gcount())});
}

bool writePlacement(const std::filesystem::path& file, const WindowPlacement& placement) {
    std::filesystem::path unfinished = file;
    unfinished += ".tmp";
    std::error_code error;
    {
        std::ofstream stream(unfinished, std::ios::binary | std::ios::trunc);
        stream << formatPlacement(placement);
        stream.close();
        if (!stream) error = std::make_error_code(std::errc::io_error);
    }
    if (!error) std::filesystem::rename(unfinished, file, error);
    std::error_code ignored;
    if (error) std::filesystem::remove(unfinished, ignored);
    return !error;
}

ScreenArea insideFrame(const ScreenArea& area, const WindowFrame& frame) {
    return {area.x + frame.left, area.y + frame.top, std::max(1, area.width - frame.left - frame.right),
            std::max(1, area.height - frame.top - frame.bottom)};
}

int stepZoom(int zoom, int steps, int most) {
    const auto at = std::ranges::lower_bound(kZooms, zoom) - kZooms.begin();
    const auto last = std::ranges::upper_bound(kZooms, most) - kZooms.begin() - 1;
    return kZooms[static_cast<std::size_t>(std::clamp<std::ptrdiff_t>(at + steps, 0, last))];
}

int largestZoom(std::span<const ScreenArea> areas, const ScreenArea& minimum) {
    int most = 100;
    for (const ScreenArea& area : areas)
        most = std::max(most, std::min(100 * area.width / minimum.width, 100 * area.height / minimum.height));
    return std::min(most, kZooms.back());
}

WindowPlacement fitPlacement(const WindowPlacement& wanted, std::span<const ScreenArea> areas,
                             const ScreenArea& minimum) {
    if (areas.empty()) return wanted;
    const auto shown = [&](const ScreenArea& area) {
        return overlap(wanted.x, wanted.width, area.x, area.width) *
               overlap(wanted.y, wanted.height, area.y, area.height);
    };
    const ScreenArea& area = *std::ranges::max_element(areas, {}, shown); // if several areas are equal, the first one
    WindowPlacement fitted = wanted;
    fitted.width = std::clamp(wanted.width, std::min(minimum.width, area.width), area.width);
    fitted.height = std::clamp(wanted.height, std::min(minimum.height, area.height), area.height);
    if (shown(area) == 0) {
        fitted.x = area.x + (area.width - fitted.width) / 2;
        fitted.y = area.y + (area.height - fitted.height) / 2;
    } else {
        fitted.x = std::clamp(wanted.x, area.x, area.x + area.width - fitted.width);
        fitted.y = std::clamp(wanted.y, area.y, area.y + area.height - fitted.height);
    }
    return fitted;
}
