#include "support/package_making.h"

#include <memory>

#include <miniz.h>
#include <openssl/evp.h>

namespace {

std::string littleEndian(std::uint64_t value, int bytes) {
    std::string text;
    for (int i = 0; i < bytes; ++i)
        text += static_cast<char>(value >> 8 * i & 0xFF);
    return text;
}

std::string deflate(const std::string& data) {
    std::string out(data.size() + 1024, '\0');
    out.resize(tdefl_compress_mem_to_mem(out.data(), out.size(), data.data(), data.size(),
                                         static_cast<int>(TDEFL_DEFAULT_MAX_PROBES)));
    return out;
}

const unsigned char* asBytes(const std::string& text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}

unsigned char* asBytes(std::string& text) {
    return reinterpret_cast<unsigned char*>(text.data());
}

} // namespace

ZipEntry unixEntry(const std::string& name, const std::string& data, std::uint32_t mode) {
    ZipEntry entry;
    entry.name = name;
    entry.data = data;
    entry.madeBy = 3 << 8 | 20;
    entry.externalAttributes = mode << 16;
    return entry;
}

std::string makeZip(const std::vector<ZipEntry>& entries) {
    std::string archive;
    std::string directory;
    for (const ZipEntry& entry : entries) {
        const std::string stored = entry.deflated ? deflate(entry.data) : entry.data;
        const std::uint32_t crc = entry.claimedCrc.value_or(
            static_cast<std::uint32_t>(mz_crc32(MZ_CRC32_INIT, asBytes(entry.data), entry.data.size())));
        const std::uint64_t offset = archive.size();
        const std::string sizes64 = littleEndian(entry.data.size(), 8) + littleEndian(stored.size(), 8);
        const std::string sizes32 =
            entry.zip64 ? std::string(8, '\xFF') : littleEndian(stored.size(), 4) + littleEndian(entry.data.size(), 4);
        // Version needed, flags, method, time, date: the same in both headers.
        const std::string common = littleEndian(entry.zip64 ? 45 : 20, 2) +
                                   littleEndian(entry.sizesBehindData ? 8 : 0, 2) +
                                   littleEndian(entry.deflated ? 8 : 0, 2) + littleEndian(0x5B210000, 4);
        const std::string localExtra = entry.zip64 ? littleEndian(1, 2) + littleEndian(16, 2) + sizes64 : "";
        const std::string directoryExtra =
            entry.zip64 ? littleEndian(1, 2) + littleEndian(24, 2) + sizes64 + littleEndian(offset, 8) : "";

        archive += "PK\3\4" + common;
        archive += entry.sizesBehindData ? std::string(12, '\0') : littleEndian(crc, 4) + sizes32;
        archive += littleEndian(entry.name.size(), 2) + littleEndian(localExtra.size(), 2) + entry.name + localExtra;
        archive += stored;
        if (entry.sizesBehindData) archive += "PK\7\10" + littleEndian(crc, 4) + sizes32;

        directory += "PK\1\2" + littleEndian(entry.madeBy, 2) + common + littleEndian(crc, 4) + sizes32;
        directory += littleEndian(entry.name.size(), 2) + littleEndian(directoryExtra.size(), 2);
        directory += std::string(6, '\0') + littleEndian(entry.externalAttributes, 4);
        directory += entry.zip64 ? std::string(4, '\xFF') : littleEndian(offset, 4);
        directory += entry.name + directoryExtra;
    }
    const std::string count = littleEndian(entries.size(), 2);
    return archive + directory + std::string("PK\5\6\0\0\0\0", 8) + count + count + littleEndian(directory.size(), 4) +
           littleEndian(archive.size(), 4) + littleEndian(0, 2);
}

std::string sha256Hex(const std::string& bytes) {
    unsigned char digest[32];
    EVP_Digest(bytes.data(), bytes.size(), digest, nullptr, EVP_sha256(), nullptr);
    std::string text;
    for (const unsigned char byte : digest) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02x", byte);
        text += digits;
    }
    return text;
}

std::string toBase64(const std::string& bytes) {
    std::string text((bytes.size() + 2) / 3 * 4 + 1, '\0');
    text.resize(
        static_cast<std::size_t>(EVP_EncodeBlock(asBytes(text), asBytes(bytes), static_cast<int>(bytes.size()))));
    return text;
}

std::string sealContainer(const std::string& plaintext, const std::string& key) {
    std::string size;
    for (int shift = 56; shift >= 0; shift -= 8)
        size += static_cast<char>(plaintext.size() >> shift & 0xFF);
    const std::string nonce = "twelve bytes";
    std::string ciphertext(plaintext.size(), '\0');
    std::string tag(16, '\0');
    int count = 0;
    EVP_CIPHER_CTX* cipher = EVP_CIPHER_CTX_new();
    EVP_EncryptInit_ex(cipher, EVP_aes_256_gcm(), nullptr, asBytes(key), asBytes(nonce));
    EVP_EncryptUpdate(cipher, asBytes(ciphertext), &count, asBytes(plaintext), static_cast<int>(plaintext.size()));
    EVP_EncryptFinal_ex(cipher, asBytes(tag), &count);
    EVP_CIPHER_CTX_ctrl(cipher, EVP_CTRL_GCM_GET_TAG, 16, tag.data());
    EVP_CIPHER_CTX_free(cipher);
    return std::string("ZANTOR1\0\1\x0C\x10\0", 12) + size + nonce + ciphertext + tag;
}

std::string SigningKey::publicKey() const {
    std::string key(32, '\0');
    std::size_t size = key.size();
    EVP_PKEY* pair = EVP_PKEY_new_raw_private_key(EVP_PKEY_ED25519, nullptr, asBytes(seed_), seed_.size());
    EVP_PKEY_get_raw_public_key(pair, asBytes(key), &size);
    EVP_PKEY_free(pair);
    return key;
}

std::string SigningKey::sign(const std::string& text) const {
    std::string signature(64, '\0');
    std::size_t size = signature.size();
    EVP_PKEY* pair = EVP_PKEY_new_raw_private_key(EVP_PKEY_ED25519, nullptr, asBytes(seed_), seed_.size());
    EVP_MD_CTX* context = EVP_MD_CTX_new();
    EVP_DigestSignInit(context, nullptr, nullptr, nullptr, pair);
    EVP_DigestSign(context, asBytes(signature), &size, asBytes(text), text.size());
    EVP_MD_CTX_free(context);
    EVP_PKEY_free(pair);
    return signature;
}
