// The build includes this header before each C++ source that MinGW-w64 compiles.
//
// All text is UTF-8, and the programs' manifest makes UTF-8 the narrow encoding of Windows. std::filesystem::path of
// libstdc++ 12 converts to narrow text as UTF-8. But it converts from narrow text with the C library's locale, and
// msvcrt has no UTF-8 locale: a path with an umlaut changes when it is converted to text and back. This specialisation
// converts from narrow text with the function that libstdc++ uses for char8_t. If the bytes are not UTF-8 (the dialogs
// can return such bytes), each byte becomes one wide character. Such a path does not find a file, but no exception is
// thrown.
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
