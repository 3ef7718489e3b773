// Finds system fonts in the registry's list of installed fonts. Font files are mapped instead of read, so that only the
// pages of the characters on screen use memory.

#include "ui/ui_host_fonts.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <windows.h>
#include <shlobj.h>

#define STBTT_STATIC
#define STB_TRUETYPE_IMPLEMENTATION
#include <imstb_truetype.h>

#include "ui/ui_fonts.h"

namespace {

namespace fs = std::filesystem;

// Windows' own fallback fonts, those most similar to Roboto first. They are searched before all other installed fonts.
constexpr std::array kPreferred = {L"segoeui.ttf",  L"arial.ttf",    L"msyh.ttc",    L"YuGothM.ttc", L"meiryo.ttc",
                                   L"malgun.ttf",   L"msjh.ttc",     L"Nirmala.ttc", L"Nirmala.ttf", L"LeelawUI.ttf",
                                   L"seguisym.ttf", L"seguihis.ttf", L"ebrima.ttf",  L"gadugi.ttf",  L"mmrtext.ttf"};

struct MappedFont : SystemFont {
    ~MappedFont() override { UnmapViewOfFile(file.data()); }
};

fs::path fontsFolder() {
    PWSTR path = nullptr;
    const bool known = SUCCEEDED(SHGetKnownFolderPath(FOLDERID_Fonts, 0, nullptr, &path));
    fs::path folder = known ? fs::path(path) : fs::path();
    CoTaskMemFree(path);
    return folder;
}

// Appends the fonts in a registry list to `files`. A value in the list is an absolute path or a file name in `folder`.
void appendInstalled(HKEY root, const fs::path& folder, std::vector<fs::path>& files) {
    HKEY list = nullptr;
    if (RegOpenKeyExW(root, L"Software\\Microsoft\\Windows NT\\CurrentVersion\\Fonts", 0, KEY_READ, &list) != 0) return;
    wchar_t name[512];
    wchar_t file[1024];
    for (DWORD index = 0;; ++index) {
        DWORD nameUnits = static_cast<DWORD>(std::size(name));
        DWORD fileBytes = sizeof file - sizeof(wchar_t);
        DWORD type = 0;
        const LSTATUS status =
            RegEnumValueW(list, index, name, &nameUnits, nullptr, &type, reinterpret_cast<BYTE*>(file), &fileBytes);
        if (status == ERROR_MORE_DATA) continue;
        if (status != ERROR_SUCCESS) break;
        file[fileBytes / sizeof(wchar_t)] = L'\0';
        if (type == REG_SZ) files.push_back(folder / file);
    }
    RegCloseKey(list);
}

bool isOutlineFont(const fs::path& file) {
    std::wstring extension = file.extension().wstring();
    std::transform(extension.begin(), extension.end(), extension.begin(), towlower);
    return extension == L".ttf" || extension == L".ttc" || extension == L".otf";
}

std::vector<fs::path> listFonts() {
    const fs::path folder = fontsFolder();
    std::vector<fs::path> files;
    for (const wchar_t* name : kPreferred)
        files.push_back(folder / name);
    appendInstalled(HKEY_LOCAL_MACHINE, folder, files);
    appendInstalled(HKEY_CURRENT_USER, folder, files);
    std::erase_if(files, [](const fs::path& file) { return !isOutlineFont(file); });
    return files;
}

std::unique_ptr<MappedFont> mapFont(const fs::path& path) {
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return nullptr;
    LARGE_INTEGER size{};
    const void* bytes = nullptr;
    if (GetFileSizeEx(file, &size) && size.QuadPart > 0) {
        if (const HANDLE mapping = CreateFileMappingW(file, nullptr, PAGE_READONLY, 0, 0, nullptr)) {
            bytes = MapViewOfFile(mapping, FILE_MAP_READ, 0, 0, 0);
            CloseHandle(mapping); // the view keeps the mapping alive
        }
    }
    CloseHandle(file);
    if (bytes == nullptr) return nullptr;
    auto font = std::make_unique<MappedFont>();
    font->file = {static_cast<const unsigned char*>(bytes), static_cast<std::size_t>(size.QuadPart)};
    return font;
}

// Returns the index of the first face in the file that has the character, or -1.
int faceWith(std::span<const unsigned char> file, std::uint32_t character) {
    const int faces = stbtt_GetNumberOfFonts(file.data());
    for (int face = 0; face < faces; ++face) {
        stbtt_fontinfo information;
        if (!isUsableFontFile(file, face)) continue;
        const int offset = stbtt_GetFontOffsetForIndex(file.data(), face);
        if (offset >= 0 && stbtt_InitFont(&information, file.data(), offset) &&
            stbtt_FindGlyphIndex(&information, static_cast<int>(character)) != 0) {
            return face;
        }
    }
    return -1;
}

} // namespace

std::unique_ptr<SystemFont> findSystemFont(std::uint32_t character) {
    static const std::vector<fs::path> fonts = listFonts();
    for (const fs::path& path : fonts) {
        std::unique_ptr<MappedFont> font = mapFont(path);
        if (!font) continue;
        const int face = faceWith(font->file, character);
        if (face < 0) continue;
        font->faceIndex = face;
        return font;
    }
    return nullptr;
}
