#pragma once

// Breaks texts into lines. Main thread only, inside a frame.

#include <string_view>
#include <vector>

struct ImFont;

// Returns the lines of a text in the font's own size, at most `wrapWidth` pixels wide. A word that is too long for a
// line is cut, if possible after a separator in an address or path. The lines of a short paragraph get about the same
// width, so that the last line is not a single word. If `wrapWidth` is 0 or less, the text is broken only at line
// feeds.
[[nodiscard]] std::vector<std::string_view> wrapText(ImFont* font, std::string_view text, float wrapWidth);
