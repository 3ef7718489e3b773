#include "signin/pkce.h"

#include <string_view>

#include <openssl/evp.h>
#include <openssl/rand.h>

std::string randomUrlToken(std::size_t byteCount) {
    std::vector<std::uint8_t> bytes(byteCount);
    if (RAND_bytes(bytes.data(), static_cast<int>(bytes.size())) != 1) return {};
    return base64UrlEncode(bytes);
}

std::vector<std::uint8_t> sha256Bytes(const std::string& text) {
    std::vector<std::uint8_t> digest(32);
    if (EVP_Digest(text.data(), text.size(), digest.data(), nullptr, EVP_sha256(), nullptr) != 1) return {};
    return digest;
}

std::string base64UrlEncode(const std::vector<std::uint8_t>& bytes) {
    static constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";
    std::string text;
    text.reserve((bytes.size() * 4 + 2) / 3);
    std::uint32_t bits = 0; // what has come in; the lowest `bitCount` of it are still to be written
    int bitCount = 0;
    for (const std::uint8_t byte : bytes) {
        bits = bits << 8 | byte;
        for (bitCount += 8; bitCount >= 6; bitCount -= 6)
            text += kAlphabet[bits >> (bitCount - 6) & 63];
    }
    if (bitCount > 0) text += kAlphabet[bits << (6 - bitCount) & 63];
    return text;
}

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
