#pragma once

// Saves and restores the window's placement and zoom. The file is one line of text: "2 x y width height maximized
// zoom". 2 is the version; version 1 has no zoom. The size is in unscaled pixels, so that it is still right if the
// monitor's scale changes. The position is in screen coordinates. The zoom is in percent.

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
    int zoom = 100;

    bool operator==(const WindowPlacement&) const = default;
};

struct ScreenArea { // the area of a monitor without task bars, in screen coordinates
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    bool operator==(const ScreenArea&) const = default;
};

struct WindowFrame { // widths of the borders and the title bar, which the window's position and size do not include
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;
};

// Returns the part of a monitor's area in which the content of a window with this frame can be.
[[nodiscard]] ScreenArea insideFrame(const ScreenArea& area, const WindowFrame& frame);

[[nodiscard]] std::optional<WindowPlacement> parsePlacement(std::string_view text); // nullopt if any value is invalid
[[nodiscard]] std::string formatPlacement(const WindowPlacement& placement);

// Returns nullopt if the file is missing or invalid.
[[nodiscard]] std::optional<WindowPlacement> readPlacement(const std::filesystem::path& file);

// Replaces the file. On failure returns false and leaves the old file unchanged.
[[nodiscard]] bool writePlacement(const std::filesystem::path& file, const WindowPlacement& placement);

// Returns the placement, moved and shrunk so that it is inside the area that shows most of it. If no area shows any of
// it, the result is in the middle of the first area. All values are in screen coordinates; the areas do not include the
// window's frame. The result is at least as large as `minimum`, unless the area is smaller. If `areas` is empty,
// returns the placement unchanged.
[[nodiscard]] WindowPlacement fitPlacement(const WindowPlacement& wanted, std::span<const ScreenArea> areas,
                                           const ScreenArea& minimum);

// Returns the zoom in percent after `steps` steps in (positive) or out (negative), from 80 to `most`.
[[nodiscard]] int stepZoom(int zoom, int steps, int most);

// Returns the largest zoom, from 100 to 200, at which a window of the smallest size fits into one of the areas.
// `minimum` is that size at zoom 100.
[[nodiscard]] int largestZoom(std::span<const ScreenArea> areas, const ScreenArea& minimum);
