#pragma once

// Breaks texts into lines. Main thread only, inside a frame.

#include <string_view>
#include <vector>

struct ImFont;

// The lines of a text in the font's own size, at most wrapWidth pixels wide. Words stay whole if they fit on a line;
// longer ones are cut, after a separator of an address or path if there is one. The lines of a short paragraph get
// about the same width, so that no single word is left on the last one. A wrapWidth of 0 or less breaks at line ends
// only.
[[nodiscard]] std::vector<std::string_view> wrapText(ImFont* font, std::string_view text, float wrapWidth);
