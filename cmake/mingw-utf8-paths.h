// Included ahead of every C++ source that MinGW-w64 compiles.
//
// Text is UTF-8 everywhere, and the programs' manifest makes that the narrow encoding of Windows. The standard library
// of this compiler writes paths as UTF-8 but reads them by the C library's locale, and that C library (msvcrt) knows no
// UTF-8 locale: a path that holds an umlaut would come back as another. Here the way in is made the same as the way
// out, by way of the function that the library itself uses for char8_t. Bytes that are no UTF-8 (the dialogs' crude
// narrowing leaves such) become units one by one: the path then names no file, and nothing is thrown.
#include <filesystem>
#include <string>
#include <string_view>

template<>
inline auto std::filesystem::path::_S_convert<char>(const char* first, const char* last) {
    try {
        return __detail::__wstr_from_utf8(std::string_view(first, static_cast<std::size_t>(last - first)));
    } catch (const filesystem_error&) {
        return std::wstring(first, last);
    }
}
