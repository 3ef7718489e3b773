#include "config/settings_text.h"

#include <algorithm>

namespace {

std::string encode(std::string_view text, std::string_view reserved) {
    constexpr char digits[] = "0123456789ABCDEF";
    std::string encoded;
    encoded.reserve(text.size());
    for (const char c : text) {
        if (reserved.find(c) == std::string_view::npos) {
            encoded += c;
            continue;
        }
        const auto byte = static_cast<unsigned char>(c);
        encoded += '%';
        encoded += digits[byte >> 4];
        encoded += digits[byte & 15];
    }
    return encoded;
}

int hexDigitValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return -1;
}

} // namespace

std::string encodeSettingKey(std::string_view key) {
    return encode(key, " %/=@\\");
}

std::string encodeSettingValue(std::string_view value) {
    return encode(value, "\n%@");
}

std::string decodeSettingText(std::string_view text) {
    std::string decoded;
    decoded.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool escape = text[i] == '%' && i + 2 < text.size();
        const int high = escape ? hexDigitValue(text[i + 1]) : -1;
        const int low = escape ? hexDigitValue(text[i + 2]) : -1;
        if (high < 0 || low < 0) {
            decoded += text[i];
            continue;
        }
        decoded += static_cast<char>(high * 16 + low);
        i += 2;
    }
    return decoded;
}

std::string_view trimSettingText(std::string_view text) {
    constexpr std::string_view blanks = "\t\r ";
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
    return text.substr(0, text.find_last_not_of(blanks) + 1);
}

bool splitSettingLine(std::string_view line, std::string& key, std::string& value) {
    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos) return false;
    key = decodeSettingText(trimSettingText(line.substr(0, equals)));
    value = decodeSettingText(trimSettingText(line.substr(equals + 1)));
    return true;
}

bool nextSettingLine(std::string_view& text, std::string_view& line) {
    if (text.empty()) return false;
    const std::size_t end = text.find('\n');
    line = trimSettingText(text.substr(0, end));
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    return true;
}
