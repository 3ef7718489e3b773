// Finds system fonts with fontconfig. Font files are mapped instead of read, so that only the pages of the characters
// on screen use memory.

#include "ui/ui_host_fonts.h"

#include <memory>

#include <fcntl.h>
#include <fontconfig/fontconfig.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr int kCandidates = 12; // try only the most similar fonts: a desktop has hundreds of fonts

struct MappedFont : SystemFont {
    ~MappedFont() override { ::munmap(const_cast<unsigned char*>(file.data()), file.size()); }
};

std::unique_ptr<SystemFont> mapFont(const char* path, int faceIndex) {
    const int descriptor = ::open(path, O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) return nullptr;
    struct stat status {};
    void* bytes = MAP_FAILED;
    if (::fstat(descriptor, &status) == 0 && status.st_size > 0)
        bytes = ::mmap(nullptr, static_cast<std::size_t>(status.st_size), PROT_READ, MAP_PRIVATE, descriptor, 0);
    ::close(descriptor);
    if (bytes == MAP_FAILED) return nullptr;
    auto font = std::make_unique<MappedFont>();
    font->file = {static_cast<const unsigned char*>(bytes), static_cast<std::size_t>(status.st_size)};
    font->faceIndex = faceIndex;
    return font;
}

template<auto Release>
struct Released {
    template<typename T>
    void operator()(T* object) const {
        Release(object);
    }
};
using Pattern = std::unique_ptr<FcPattern, Released<FcPatternDestroy>>;
using CharSet = std::unique_ptr<FcCharSet, Released<FcCharSetDestroy>>;
using FontSet = std::unique_ptr<FcFontSet, Released<FcFontSetDestroy>>;

} // namespace

std::unique_ptr<SystemFont> findSystemFont(std::uint32_t character) {
    const CharSet wanted(FcCharSetCreate());
    const Pattern pattern(FcPatternCreate());
    if (!FcInit() || !wanted || !pattern) return nullptr;
    FcCharSetAddChar(wanted.get(), character);
    FcPatternAddCharSet(pattern.get(), FC_CHARSET, wanted.get());
    FcPatternAddString(pattern.get(), FC_FAMILY, reinterpret_cast<const FcChar8*>("sans-serif"));
    FcPatternAddInteger(pattern.get(), FC_WEIGHT, FC_WEIGHT_MEDIUM);
    FcPatternAddBool(pattern.get(), FC_SCALABLE, FcTrue);
    FcPatternAddBool(pattern.get(), FC_COLOR, FcFalse);
    FcConfigSubstitute(nullptr, pattern.get(), FcMatchPattern);
    FcDefaultSubstitute(pattern.get());

    FcResult result = FcResultNoMatch;
    const FontSet fonts(FcFontSort(nullptr, pattern.get(), FcTrue, nullptr, &result));
    for (int i = 0, tried = 0; fonts && i < fonts->nfont && tried < kCandidates; ++i) {
        FcCharSet* has = nullptr;
        FcBool outline = FcFalse;
        FcChar8* path = nullptr;
        int faceIndex = 0;
        if (FcPatternGetCharSet(fonts->fonts[i], FC_CHARSET, 0, &has) != FcResultMatch ||
            !FcCharSetHasChar(has, character) ||
            FcPatternGetBool(fonts->fonts[i], FC_OUTLINE, 0, &outline) != FcResultMatch || !outline ||
            FcPatternGetString(fonts->fonts[i], FC_FILE, 0, &path) != FcResultMatch)
            continue;
        ++tried;
        FcPatternGetInteger(fonts->fonts[i], FC_INDEX, 0, &faceIndex);
        // Clear the upper 16 bits of the index: they select an instance of a variable font, but stb_truetype can only
        // draw the default instance.
        if (auto font = mapFont(reinterpret_cast<const char*>(path), faceIndex & 0xFFFF)) return font;
    }
    return nullptr;
}
