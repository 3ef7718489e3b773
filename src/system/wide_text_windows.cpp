#include "system/wide_text_windows.h"

namespace {

wchar_t widenByte(char byte) {
    return static_cast<wchar_t>(static_cast<signed char>(byte));
}

} // namespace

std::wstring widenBytes(const std::string& text) {
    std::wstring units;
    units.reserve(text.size());
    for (const char byte : text)
        units += widenByte(byte);
    return units;
}

std::string narrowUnits(const wchar_t* units) {
    std::string text;
    for (; *units != L'\0'; ++units)
        text += static_cast<char>(*units & 0xFF);
    return text;
}

// Doubles the backslashes directly before a quotation mark, including the closing quotation mark. Copies all other
// backslashes unchanged.
std::wstring quoteCommandLineArgument(const std::string& text) {
    std::wstring quoted = L"\"";
    std::size_t backslashes = 0;
    for (const char byte : text) {
        if (byte == '\\') {
            ++backslashes;
            continue;
        }
        quoted.append(byte == '"' ? 2 * backslashes + 1 : backslashes, L'\\');
        quoted += widenByte(byte);
        backslashes = 0;
    }
    quoted.append(2 * backslashes, L'\\');
    return quoted + L'"';
}
