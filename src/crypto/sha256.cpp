#include "crypto/sha256.h"

#include <fstream>
#include <vector>

Sha256::Sha256()
    : context_(EVP_MD_CTX_new(), &EVP_MD_CTX_free)
    , good_(context_ && EVP_DigestInit_ex(context_.get(), EVP_sha256(), nullptr) == 1) {}

void Sha256::update(const void* bytes, std::size_t count) {
    good_ = good_ && EVP_DigestUpdate(context_.get(), bytes, count) == 1;
}

std::string Sha256::finish() {
    unsigned char bytes[EVP_MAX_MD_SIZE];
    unsigned int size = 0;
    good_ = good_ && EVP_DigestFinal_ex(context_.get(), bytes, &size) == 1;
    return good_ ? hexEncode(bytes, size) : std::string();
}

std::string sha256OfFile(const std::string& path, const std::atomic<bool>* stop) {
    std::ifstream file;
    file.rdbuf()->pubsetbuf(nullptr, 0); // unbuffered, because the reads below are large
    file.open(path, std::ios::binary);
    if (!file) return {};
    Sha256 digest;
    std::vector<char> buffer(262144);
    while (file) {
        if (stop && *stop) return {};
        file.read(buffer.data(), static_cast<std::streamsize>(buffer.size()));
        digest.update(buffer.data(), static_cast<std::size_t>(file.gcount()));
    }
    return file.eof() && !file.bad() ? digest.finish() : std::string();
}

std::vector<std::uint8_t> sha256Bytes(const std::string& text) {
    std::vector<std::uint8_t> digest(32);
    if (EVP_Digest(text.data(), text.size(), digest.data(), nullptr, EVP_sha256(), nullptr) != 1) return {};
    return digest;
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
