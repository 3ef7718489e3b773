#include "ui/ui_fonts.h"

#include <array>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <unordered_set>
#include <vector>

#include <imgui_internal.h>

#include "ui/ui_host_fonts.h"

namespace {

constexpr std::size_t kMaxFontFileBytes = 64u << 20;
constexpr std::size_t kMaxSystemFonts = 16;

// The size of Roboto's em square divided by its line height. System fonts are scaled by their em square, so that their
// characters are as high as Roboto's even if their line heights differ.
constexpr float kEmShare = 2048.0f / 2400.0f;

struct SizedFont {
    float nominalSize;
    ImFont* font;
};

struct FallbackFace {
    std::unique_ptr<SystemFont> source;
    ImFontConfig config;
};

struct Fonts {
    ImFontAtlas* atlas = nullptr;
    float scale = 1.0f;
    void* file = nullptr; // the first font of the atlas owns it
    int fileBytes = 0;
    std::vector<SizedFont> sized;
    std::vector<std::unique_ptr<FallbackFace>> faces;
    std::unordered_set<ImWchar> missing; // characters that no font has
};
Fonts fonts;

// --- glyphs on whole pixels ------------------------------------------------------------------------------------------

// Loads a glyph and moves its baseline to a whole pixel of the size in which the glyph is drawn. Dear ImGui 1.92 itself
// moves the baseline to a whole pixel of the baked size, so the text is blurred if the two sizes differ.
bool loadAlignedGlyph(ImFontAtlas* atlas, ImFontConfig* config, ImFontBaked* baked, void* data, ImWchar character,
                      ImFontGlyph* glyph, float* advance) {
    const float drawn = baked->RasterizerDensity / ImGui::GetIO().DisplayFramebufferScale.y; // drawn size / baked size
    const float baseline = std::round(baked->Ascent);
    const float shift = std::round(baseline * drawn) / drawn - baseline;
    config->GlyphOffset.y = shift * baked->ContainerFont->Sources[0]->SizePixels / baked->Size;
    return ImFontAtlasGetFontLoaderForStbTruetype()->FontBakedLoadGlyph(atlas, config, baked, data, character, glyph,
                                                                        advance);
}

const ImFontLoader* alignedLoader() {
    static const ImFontLoader loader = [] {
        ImFontLoader made = *ImFontAtlasGetFontLoaderForStbTruetype();
        made.FontBakedLoadGlyph = loadAlignedGlyph;
        return made;
    }();
    return &loader;
}

// --- characters that the font file lacks -----------------------------------------------------------------------------

// Prepares a system font so that it is scaled by its em square. Dear ImGui 1.92's stb loader scales a merged font by
// its size divided by the reference font's size. Both sizes are negative here, because the loader then scales the em
// square. If they are positive, it scales the line height.
bool initializeFace(FallbackFace& face) {
    ImFontConfig reference;
    reference.SizePixels = -1.0f;
    ImFont referenceFont;
    referenceFont.Sources.push_back(&reference);
    face.config.MergeMode = true;
    face.config.SizePixels = -kEmShare;
    face.config.FontData = const_cast<unsigned char*>(face.source->file.data());
    face.config.FontDataSize = static_cast<int>(face.source->file.size());
    face.config.FontNo = static_cast<ImU32>(face.source->faceIndex);
    face.config.DstFont = &referenceFont;
    const bool usable = ImFontAtlasGetFontLoaderForStbTruetype()->FontSrcInit(fonts.atlas, &face.config);
    face.config.DstFont = nullptr;
    return usable;
}

bool isWorthAsking(ImWchar character) {
    const bool surrogateOrPrivate = (character >= 0xD800 && character < 0xF900) || character >= 0xF0000;
    const bool special = (character & 0xFFFFu) >= 0xFFF0; // non-characters and special characters without a glyph
    return character >= 0xA0 && !surrogateOrPrivate && !special;
}

ImFontConfig* faceWith(ImWchar character) {
    if (!fonts.atlas || !isWorthAsking(character) || fonts.missing.contains(character)) return nullptr;
    const ImFontLoader* loader = ImFontAtlasGetFontLoaderForStbTruetype();
    for (const auto& face : fonts.faces)
        if (loader->FontSrcContainsGlyph(fonts.atlas, &face->config, character)) return &face->config;

    if (fonts.faces.size() < kMaxSystemFonts) {
        auto face = std::make_unique<FallbackFace>();
        face->source = findSystemFont(character);
        if (face->source && isUsableFontFile(face->source->file, face->source->faceIndex) && initializeFace(*face)) {
            fonts.faces.push_back(std::move(face));
            ImFontConfig* config = &fonts.faces.back()->config;
            if (loader->FontSrcContainsGlyph(fonts.atlas, config, character)) return config;
        }
    }
    fonts.missing.insert(character);
    return nullptr;
}

bool fallbackHasGlyph(ImFontAtlas*, ImFontConfig*, ImWchar character) {
    return faceWith(character) != nullptr;
}

bool loadFallbackGlyph(ImFontAtlas* atlas, ImFontConfig*, ImFontBaked* baked, void* data, ImWchar character,
                       ImFontGlyph* glyph, float* advance) {
    ImFontConfig* config = faceWith(character);
    return config && loadAlignedGlyph(atlas, config, baked, data, character, glyph, advance);
}

const ImFontLoader* fallbackLoader() {
    static const ImFontLoader loader = [] {
        ImFontLoader made;
        made.Name = "system fonts";
        made.FontSrcContainsGlyph = fallbackHasGlyph;
        made.FontBakedLoadGlyph = loadFallbackGlyph;
        return made;
    }();
    return &loader;
}

// --- the font file ---------------------------------------------------------------------------------------------------

void readFontFile(const std::string& path) {
    if (path.empty()) return;
    const std::filesystem::path file(std::u8string(path.begin(), path.end()));
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(file, error);
    if (error || size == 0 || size > kMaxFontFileBytes) return;
    auto* bytes = static_cast<unsigned char*>(IM_ALLOC(size));
    std::ifstream stream(file, std::ios::binary);
    stream.read(reinterpret_cast<char*>(bytes), static_cast<std::streamsize>(size));
    if (!stream || !isUsableFontFile({bytes, size})) {
        IM_FREE(bytes);
        return;
    }
    fonts.file = bytes;
    fonts.fileBytes = static_cast<int>(size);
}

ImFont* addFont(float pixels) {
    ImFontConfig config;
    config.SizePixels = pixels;
    ImFont* font = nullptr;
    if (fonts.file) {
        config.FontData = fonts.file;
        config.FontDataSize = fonts.fileBytes;
        config.FontLoader = alignedLoader();
        font = fonts.atlas->AddFont(&config);
        // Set the flag after AddFont, which copies the data if the flag is false. The atlas frees the file with the
        // first font; the other fonts use the same data.
        font->Sources[0]->FontDataOwnedByAtlas = fonts.sized.empty();
    } else {
        config.PixelSnapH = true;
        config.OversampleH = config.OversampleV = 1;
        font = fonts.atlas->AddFontDefault(&config);
    }
    ImFontConfig fallback;
    fallback.MergeMode = true;
    fallback.FontLoader = fallbackLoader();
    fonts.atlas->AddFont(&fallback);
    return font;
}

void resize(ImFont* font, float pixels) {
    font->LegacySize = pixels;
    // Dear ImGui bakes glyphs for whole sizes. Set the density so that the baked bitmap has the exact size and is not
    // blurred by scaling.
    const float baked = ImGui::GetRoundedFontSize(pixels);
    font->CurrentRasterizerDensity = pixels / baked * ImGui::GetIO().DisplayFramebufferScale.y;
}

} // namespace

void fontsInitialize(const std::string& path, float scale) {
    fontsShutdown();
    fonts.atlas = ImGui::GetIO().Fonts;
    fonts.scale = scale;
    readFontFile(path);
}

void fontsShutdown() {
    for (const auto& face : fonts.faces)
        ImFontAtlasGetFontLoaderForStbTruetype()->FontSrcDestroy(fonts.atlas, &face->config);
    if (fonts.sized.empty() && fonts.file) IM_FREE(fonts.file); // no font owns it yet
    fonts = {};
}

void fontsSetScale(float scale) {
    fonts.scale = scale;
    for (const SizedFont& entry : fonts.sized)
        resize(entry.font, entry.nominalSize * scale);
}

ImFont* fontAt(float nominalSize) {
    if (fonts.atlas != ImGui::GetIO().Fonts) fontsInitialize({}, fonts.scale);
    const float pixels = nominalSize * fonts.scale;
    for (const SizedFont& entry : fonts.sized)
        if (entry.nominalSize == nominalSize) {
            resize(entry.font, pixels); // again, because ImGui::PushFont (1.92) resets the density
            return entry.font;
        }
    ImFont* font = addFont(pixels);
    fonts.sized.push_back({nominalSize, font});
    resize(font, pixels);
    return font;
}

bool isUsableFontFile(std::span<const unsigned char> file, int faceIndex) {
    const auto u16 = [&](std::size_t at) { return static_cast<std::size_t>(file[at] << 8 | file[at + 1]); };
    const auto u32 = [&](std::size_t at) { return u16(at) << 16 | u16(at + 2); };
    const auto tagAt = [&](std::size_t at, const char* tag) { return std::memcmp(&file[at], tag, 4) == 0; };
    if (file.size() < 12) return false;

    std::size_t header = 0;
    if (tagAt(0, "ttcf")) {
        if (faceIndex < 0 || static_cast<std::size_t>(faceIndex) >= u32(8)) return false;
        const std::size_t entry = 12 + 4 * static_cast<std::size_t>(faceIndex);
        if (entry + 4 > file.size()) return false;
        header = u32(entry);
        if (header + 12 > file.size()) return false;
    }
    if (!tagAt(header, std::array<char, 4>{0, 1, 0, 0}.data()) && !tagAt(header, "OTTO") && !tagAt(header, "true"))
        return false;

    const std::size_t tables = u16(header + 4);
    if (header + 12 + 16 * tables > file.size()) return false;
    constexpr const char* kNeeded[] = {"cmap", "head", "hhea", "hmtx", "maxp"};
    std::size_t needed = 0;
    bool outlines = false;
    for (std::size_t i = 0; i < tables; ++i) {
        const std::size_t record = header + 12 + 16 * i;
        if (u32(record + 8) > file.size() || u32(record + 12) > file.size() - u32(record + 8)) return false;
        for (const char* tag : kNeeded)
            needed += tagAt(record, tag) ? 1u : 0u;
        outlines = outlines || tagAt(record, "glyf") || tagAt(record, "CFF ");
    }
    return needed == std::size(kNeeded) && outlines;
}
