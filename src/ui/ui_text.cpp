#include "ui/ui_text.h"

#include <algorithm>
#include <cfloat>
#include <utility>

#include <imgui.h>
#include <imgui_internal.h>

namespace {

using Lines = std::vector<std::string_view>;

constexpr std::string_view kBlanks = " \t";
constexpr std::string_view kFolderSeparators = "/\\";
constexpr std::string_view kOtherSeparators = "-_.?&=";
constexpr std::size_t kMostBalancedLines = 4;
constexpr int kBalancingSteps = 8;

float widthOf(ImFont* font, std::string_view text) {
    return font->CalcTextSizeA(font->LegacySize, FLT_MAX, 0.0f, text.data(), text.data() + text.size()).x;
}

// Returns how many bytes of a word that is wider than a line go on the first line. The line ends after a separator, but
// only if it then has at least a third of the bytes that fit. Otherwise it takes all characters that fit, at least one.
std::size_t bytesThatFit(ImFont* font, std::string_view word, float width) {
    std::size_t fits = 0;
    while (fits < word.size()) {
        unsigned character = 0;
        const char* at = word.data() + fits;
        const auto bytes = static_cast<std::size_t>(ImTextCharFromUtf8(&character, at, word.data() + word.size()));
        if (fits > 0 && widthOf(font, word.substr(0, fits + bytes)) > width) break;
        fits += bytes;
    }
    for (const std::string_view separators : {kFolderSeparators, kOtherSeparators}) {
        const std::size_t separator = word.substr(0, fits).find_last_of(separators);
        if (separator != std::string_view::npos && separator > fits / 3) return separator + 1;
    }
    return fits;
}

// Breaks a paragraph into lines. Puts as many words as possible on each line.
Lines fillLines(ImFont* font, std::string_view paragraph, float width) {
    Lines lines;
    std::string_view line;
    for (std::size_t at = 0; (at = paragraph.find_first_not_of(kBlanks, at)) != std::string_view::npos;) {
        const std::size_t wordEnd = std::min(paragraph.find_first_of(kBlanks, at), paragraph.size());
        if (!line.empty()) {
            const auto begin = static_cast<std::size_t>(line.data() - paragraph.data());
            const std::string_view longer = paragraph.substr(begin, wordEnd - begin);
            if (widthOf(font, longer) <= width) {
                line = longer;
                at = wordEnd;
                continue;
            }
            lines.push_back(line);
        }
        std::string_view word = paragraph.substr(at, wordEnd - at);
        while (widthOf(font, word) > width) {
            const std::size_t fits = bytesThatFit(font, word, width);
            if (fits == word.size()) break; // a single character that is wider than the line
            lines.push_back(word.substr(0, fits));
            word.remove_prefix(fits);
        }
        line = word;
        at = wordEnd;
    }
    lines.push_back(line);
    return lines;
}

// Breaks a paragraph into as many lines as `lines` has, but makes them as narrow as possible.
Lines balanceLines(ImFont* font, std::string_view paragraph, float width, Lines lines) {
    float tooNarrow = 0.0f; // starts at the width of the longest word, which must not be cut
    for (std::size_t at = 0; (at = paragraph.find_first_not_of(kBlanks, at)) != std::string_view::npos;) {
        const std::size_t wordEnd = std::min(paragraph.find_first_of(kBlanks, at), paragraph.size());
        tooNarrow = std::max(tooNarrow, widthOf(font, paragraph.substr(at, wordEnd - at)));
        at = wordEnd;
    }
    if (tooNarrow > width) return lines;
    for (int step = 0; step < kBalancingSteps; ++step) {
        const float middle = (tooNarrow + width) * 0.5f;
        Lines narrower = fillLines(font, paragraph, middle);
        if (narrower.size() > lines.size()) {
            tooNarrow = middle;
        } else {
            width = middle;
            lines = std::move(narrower);
        }
    }
    return lines;
}

} // namespace

std::vector<std::string_view> wrapText(ImFont* font, std::string_view text, float wrapWidth) {
    Lines lines;
    while (true) {
        const std::size_t end = text.find('\n');
        const std::string_view paragraph = text.substr(0, end);
        if (wrapWidth <= 0.0f) {
            lines.push_back(paragraph);
        } else {
            Lines wrapped = fillLines(font, paragraph, wrapWidth);
            if (wrapped.size() > 1 && wrapped.size() <= kMostBalancedLines)
                wrapped = balanceLines(font, paragraph, wrapWidth, std::move(wrapped));
            lines.insert(lines.end(), wrapped.begin(), wrapped.end());
        }
        if (end == std::string_view::npos) return lines;
        text.remove_prefix(end + 1);
    }
}
