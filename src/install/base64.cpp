#include "install/base64.h"

#include <openssl/evp.h>

static const unsigned char* asBytes(std::string_view text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}

std::string base64Encode(std::string_view bytes) {
    std::string text((bytes.size() + 2) / 3 * 4 + 1, '\0'); // the encoder ends it with a zero byte
    const int size =
        EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()), asBytes(bytes), static_cast<int>(bytes.size()));
    text.resize(static_cast<std::size_t>(size));
    return text;
}

std::string base64DecodeCanonical(std::string_view text) {
    std::string bytes(text.size() / 4 * 3, '\0');
    const int size =
        EVP_DecodeBlock(reinterpret_cast<unsigned char*>(bytes.data()), asBytes(text), static_cast<int>(text.size()));
    if (size <= 0) return {};
    // The decoder counts padding as zero bytes and forgives blanks and stray bits; the comparison forgives nothing.
    std::size_t padding = 0;
    while (padding < 2 && text[text.size() - 1 - padding] == '=')
        ++padding;
    bytes.resize(static_cast<std::size_t>(size) - padding);
    return base64Encode(bytes) == text ? bytes : std::string();
}
