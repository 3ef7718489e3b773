#include "crypto/base64.h"

#include <algorithm>

#include <openssl/evp.h>

namespace {

constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

const unsigned char* asBytes(std::string_view text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}

// Decodes whole groups of four digits with EVP_DecodeBlock. Returns an empty text if OpenSSL rejects `text`. OpenSSL
// decodes padding as zero bytes, and accepts white space and unused bits that are not zero.
std::string decodeGroups(std::string_view text) {
    std::string bytes(text.size() / 4 * 3, '\0');
    const int size =
        EVP_DecodeBlock(reinterpret_cast<unsigned char*>(bytes.data()), asBytes(text), static_cast<int>(text.size()));
    bytes.resize(static_cast<std::size_t>(std::max(size, 0)));
    return bytes;
}

} // namespace

std::string base64Encode(std::string_view bytes) {
    std::string text((bytes.size() + 2) / 3 * 4 + 1, '\0'); // EVP_EncodeBlock adds a zero byte
    const int size =
        EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()), asBytes(bytes), static_cast<int>(bytes.size()));
    text.resize(static_cast<std::size_t>(size));
    return text;
}

std::string base64UrlEncode(std::string_view bytes) {
    std::string text = base64Encode(bytes);
    text.erase(text.find_last_not_of('=') + 1);
    std::replace(text.begin(), text.end(), '+', '-');
    std::replace(text.begin(), text.end(), '/', '_');
    return text;
}

std::string base64DecodeCanonical(std::string_view text) {
    std::string bytes = decodeGroups(text);
    if (bytes.empty()) return {};
    const std::size_t padding = std::min<std::size_t>(text.size() - 1 - text.find_last_not_of('='), 2);
    bytes.resize(bytes.size() - padding);
    return base64Encode(bytes) == text ? bytes : std::string();
}

std::string base64DecodeLenient(std::string_view text) {
    std::string digits;
    for (char letter : text.substr(0, text.find('='))) {
        if (letter == '-') letter = '+';
        if (letter == '_') letter = '/';
        if (kDigits.find(letter) != std::string_view::npos) digits += letter;
    }
    const std::size_t size = digits.size() * 6 / 8;
    digits.resize((digits.size() + 3) / 4 * 4, kDigits.front());
    std::string bytes = decodeGroups(digits);
    bytes.resize(size);
    return bytes;
}
