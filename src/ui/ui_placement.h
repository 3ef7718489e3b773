#pragma once

// The window's placement between runs. The file is one line of text: "1 x y width height maximized", where 1 is the
// version. The size is in units at scale 1, so that it survives a change of scale. The position is in screen
// coordinates.

#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>

struct WindowPlacement {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    bool maximized = false;

    bool operator==(const WindowPlacement&) const = default;
};

struct ScreenArea { // of a monitor, without task bars
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
};

[[nodiscard]] std::optional<WindowPlacement> parsePlacement(std::string_view text); // nothing if any part is invalid
[[nodiscard]] std::string formatPlacement(const WindowPlacement& placement);

// Nothing if the file is missing or invalid.
[[nodiscard]] std::optional<WindowPlacement> readPlacement(const std::filesystem::path& file);
// False leaves the old file unchanged.
[[nodiscard]] bool writePlacement(const std::filesystem::path& file, const WindowPlacement& placement);

// Moves and shrinks a placement until it lies inside the area that shows most of it, or in the middle of the first area
// if none shows any of it. All values are in screen coordinates. The result is at least as large as `minimum`, unless
// the area is smaller. Without areas the placement is returned unchanged.
[[nodiscard]] WindowPlacement fitPlacement(const WindowPlacement& wanted, std::span<const ScreenArea> areas,
                                           const ScreenArea& minimum);
