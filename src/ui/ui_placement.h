#pragma once

// Where the window stood when it was closed: a file of the host's own, one line of text "1 x y width height maximized".
// The size is in units at scale 1, so that it survives a change of scale; the position is in the screen's coordinates.

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

struct ScreenArea { // what a monitor leaves to windows
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
};

[[nodiscard]] std::optional<WindowPlacement> parsePlacement(std::string_view text); // nothing unless all of it is sound
[[nodiscard]] std::string formatPlacement(const WindowPlacement& placement);

// Nothing for a missing, foreign or damaged file.
[[nodiscard]] std::optional<WindowPlacement> readPlacement(const std::filesystem::path& file);
// The old file stays as it was when this fails.
[[nodiscard]] bool writePlacement(const std::filesystem::path& file, const WindowPlacement& placement);

// The placement, in the screen's coordinates, moved and cut until all of it lies on the area that shows most of it; in
// the middle of the first area when none shows any. `minimum` gives way to an area that is smaller. Without areas
// nothing is known and nothing changes.
[[nodiscard]] WindowPlacement fitPlacement(const WindowPlacement& wanted, std::span<const ScreenArea> areas,
                                           const ScreenArea& minimum);
