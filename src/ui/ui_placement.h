#pragma once

// The window's placement and zoom between runs. The file is one line of text: "2 x y width height maximized zoom",
// where 2 is the version; version 1 had no zoom. The size is in units at zoom 100, so that it survives a change of the
// monitor's scale. The position is in screen coordinates. The zoom is in percent.

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

struct ScreenArea { // of a monitor, without task bars
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    bool operator==(const ScreenArea&) const = default;
};

struct WindowFrame { // the title bar and the borders, which are outside a window's own position and size
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;
};

// What is left of a monitor's area for the content of a window.
[[nodiscard]] ScreenArea insideFrame(const ScreenArea& area, const WindowFrame& frame);

[[nodiscard]] std::optional<WindowPlacement> parsePlacement(std::string_view text); // nothing if any part is invalid
[[nodiscard]] std::string formatPlacement(const WindowPlacement& placement);

// Nothing if the file is missing or invalid.
[[nodiscard]] std::optional<WindowPlacement> readPlacement(const std::filesystem::path& file);
// False leaves the old file unchanged.
[[nodiscard]] bool writePlacement(const std::filesystem::path& file, const WindowPlacement& placement);

// Moves and shrinks a placement until it lies inside the area that shows most of it, or in the middle of the first area
// if none shows any of it. All values are in screen coordinates; the areas exclude the window's frame. The result is at
// least as large as `minimum`, unless the area is smaller. Without areas the placement is returned unchanged.
[[nodiscard]] WindowPlacement fitPlacement(const WindowPlacement& wanted, std::span<const ScreenArea> areas,
                                           const ScreenArea& minimum);

// The zoom after `steps` steps of zooming in (positive) or out (negative), in percent, and at most `most`.
[[nodiscard]] int stepZoom(int zoom, int steps, int most);

// The largest zoom at which a window of `minimum`, its size at zoom 100, fits into one of the areas. From 100 to 200.
[[nodiscard]] int largestZoom(std::span<const ScreenArea> areas, const ScreenArea& minimum);
