#include "install/file_hash.h"

#include <fstream>
#include <memory>
#include <vector>

#include <openssl/evp.h>

std::string sha256OfFile(const std::string& path) {
    std::ifstream file;
    file.rdbuf()->pubsetbuf(nullptr, 0); // the reads below are large enough
    file.open(path, std::ios::binary);
    const std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> digest(EVP_MD_CTX_new(), &EVP_MD_CTX_free);
    if (!file || !digest || EVP_DigestInit_ex(digest.get(), EVP_sha256(), nullptr) != 1) return {};

    std::vector<char> buffer(262144);
    while (file) {
        file.read(buffer.data(), static_cast<std::streamsize>(buffer.size()));
        const auto count = static_cast<std::size_t>(file.gcount());
        if (count > 0 && EVP_DigestUpdate(digest.get(), buffer.data(), count) != 1) return {};
    }
    unsigned char bytes[EVP_MAX_MD_SIZE];
    unsigned int size = 0;
    if (!file.eof() || file.bad() || EVP_DigestFinal_ex(digest.get(), bytes, &size) != 1) return {};
    return hexEncode(bytes, size);
}

std::string hexEncode(const unsigned char* bytes, std::size_t count) {
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    text.reserve(count * 2);
    for (std::size_t i = 0; i < count; ++i) {
        text += kDigits[bytes[i] >> 4];
        text += kDigits[bytes[i] & 15];
    }
    return text;
}
