#include "system/percent_encoding.h"

#include <charconv>
#include <string_view>

std::string percentEncode(const std::string& text) {
    static constexpr char kHex[] = "0123456789ABCDEF";
    static constexpr std::string_view kUnreserved =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_.~";
    std::string encoded;
    for (const char character : text) {
        if (kUnreserved.find(character) != std::string_view::npos) {
            encoded += character;
        } else {
            const auto byte = static_cast<unsigned char>(character);
            encoded += {'%', kHex[byte >> 4], kHex[byte & 15]};
        }
    }
    return encoded;
}

std::string percentDecode(const std::string& text) {
    std::string decoded;
    for (std::size_t i = 0; i < text.size(); ++i) {
        unsigned byte = 0;
        const char* digits = text.data() + i + 1;
        const bool escape =
            text[i] == '%' && i + 2 < text.size() && std::from_chars(digits, digits + 2, byte, 16).ptr == digits + 2;
        decoded += escape ? static_cast<char>(byte) : text[i];
        if (escape) i += 2;
    }
    return decoded;
}
