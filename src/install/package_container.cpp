#include "install/package_container.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <memory>
#include <vector>

#include <openssl/evp.h>

#include "crypto/base64.h"

namespace {

constexpr std::size_t kChunkSize = 65536;

bool readExactly(std::ifstream& file, unsigned char* bytes, std::size_t count) {
    file.read(reinterpret_cast<char*>(bytes), static_cast<std::streamsize>(count));
    return static_cast<std::size_t>(file.gcount()) == count;
}

struct ContainerHeader {
    std::array<unsigned char, container::kHeaderSize> bytes{};
    std::array<unsigned char, container::kTagSize> tag{};
    std::uint64_t payloadSize = 0;

    [[nodiscard]] const unsigned char* nonce() const { return bytes.data() + container::kNonceOffset; }
};

// After openContainer succeeds, the header is valid and the file is positioned at the ciphertext.
struct OpenContainer {
    std::string key;
    std::ifstream file;
    ContainerHeader header;
};

// Reads header and tag, then seeks to the first byte of the ciphertext. Returns an error text, or null on success.
const char* readHeader(std::ifstream& file, ContainerHeader& header) {
    file.seekg(0, std::ios::end);
    const auto end = static_cast<std::streamoff>(file.tellg());
    const auto fileSize = static_cast<std::uint64_t>(std::max<std::streamoff>(end, 0));
    file.seekg(0);
    if (fileSize < container::kHeaderSize + container::kTagSize)
        return "Encrypted file is too small to contain valid container header.";
    if (!readExactly(file, header.bytes.data(), container::kHeaderSize)) return "Could not read container header.";
    if (!std::equal(container::kMagic.begin(), container::kMagic.end(),
                    reinterpret_cast<const char*>(header.bytes.data())))
        return "Invalid container magic bytes.";
    const std::size_t formatOffset = container::kMagic.size();
    if (header.bytes[formatOffset] != container::kFormatVersion ||
        header.bytes[formatOffset + 1] != container::kNonceSize ||
        header.bytes[formatOffset + 2] != container::kTagSize)
        return "Unsupported container format version or parameters.";
    for (std::size_t i = container::kSizeOffset; i < container::kNonceOffset; ++i)
        header.payloadSize = header.payloadSize << 8 | header.bytes[i];
    // Subtract: adding to an untrusted size could overflow.
    if (header.payloadSize != fileSize - (container::kHeaderSize + container::kTagSize))
        return "Container file size does not match declared payload size.";
    file.seekg(static_cast<std::streamoff>(container::kHeaderSize + header.payloadSize));
    if (!readExactly(file, header.tag.data(), container::kTagSize)) return "Could not read authentication tag.";
    file.seekg(static_cast<std::streamoff>(container::kHeaderSize));
    return nullptr;
}

// Decrypts the payload into `sink`. Returns null if the tag authenticates all data that `sink` received, otherwise an
// error text.
const char* decryptPayload(OpenContainer& opened, const PlaintextSink& sink) {
    ContainerHeader& header = opened.header;
    const std::unique_ptr<EVP_CIPHER_CTX, decltype(&EVP_CIPHER_CTX_free)> cipher(EVP_CIPHER_CTX_new(),
                                                                                 &EVP_CIPHER_CTX_free);
    if (!cipher) return "Failed to allocate cipher context.";
    if (EVP_DecryptInit_ex(cipher.get(), EVP_aes_256_gcm(), nullptr, nullptr, nullptr) != 1 ||
        EVP_CIPHER_CTX_ctrl(cipher.get(), EVP_CTRL_GCM_SET_IVLEN, container::kNonceSize, nullptr) != 1 ||
        EVP_DecryptInit_ex(cipher.get(), nullptr, nullptr, reinterpret_cast<const unsigned char*>(opened.key.data()),
                           header.nonce()) != 1)
        return "Failed to initialize AES-256-GCM cipher.";

    std::vector<unsigned char> ciphertext(kChunkSize);
    std::vector<unsigned char> plaintext(kChunkSize + 16);
    int produced = 0;
    const auto pass = [&] {
        if (produced > 0) sink(plaintext.data(), static_cast<std::size_t>(produced));
    };
    for (std::uint64_t left = header.payloadSize; left > 0;) {
        const auto wanted = static_cast<std::streamsize>(std::min<std::uint64_t>(kChunkSize, left));
        opened.file.read(reinterpret_cast<char*>(ciphertext.data()), wanted);
        const std::streamsize count = opened.file.gcount();
        if (count <= 0) return "Premature end of ciphertext.";
        if (EVP_DecryptUpdate(cipher.get(), plaintext.data(), &produced, ciphertext.data(), static_cast<int>(count)) !=
            1)
            return "Decryption error.";
        pass();
        left -= static_cast<std::uint64_t>(count);
    }
    if (EVP_CIPHER_CTX_ctrl(cipher.get(), EVP_CTRL_GCM_SET_TAG, container::kTagSize, header.tag.data()) != 1)
        return "Failed to set authentication tag.";
    if (EVP_DecryptFinal_ex(cipher.get(), plaintext.data(), &produced) <= 0)
        return "Authentication tag verification failed: artifact has been tampered with or key is invalid.";
    pass();
    return nullptr;
}

const char* openContainer(OpenContainer& opened, const std::string& path) {
    opened.file.rdbuf()->pubsetbuf(nullptr, 0); // unbuffered: the chunks are large
    opened.file.open(path, std::ios::binary);
    if (!opened.file) return "Could not open encrypted file for reading.";
    return readHeader(opened.file, opened.header);
}

const char* openContainer(OpenContainer& opened, const std::string& path, const std::string& keyText) {
    opened.key = base64DecodeLenient(keyText);
    if (opened.key.size() != container::kKeySize) return "Invalid decryption key length.";
    return openContainer(opened, path);
}
} // namespace

bool isEncryptedPackage(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::array<char, container::kMagic.size()> start{};
    file.read(start.data(), start.size());
    return file.gcount() == static_cast<std::streamsize>(start.size()) &&
           std::equal(start.begin(), start.end(), container::kMagic.begin());
}

bool decryptPackage(const std::string& containerPath, const std::string& outputPath, const std::string& keyText,
                    std::string& failureText, const std::function<void(std::uint64_t size)>& onWritten) {
    const auto fail = [&](const char* text) {
        failureText = text;
        return false;
    };
    OpenContainer opened;
    if (const char* wrong = openContainer(opened, containerPath, keyText)) return fail(wrong);
    std::ofstream output;
    output.rdbuf()->pubsetbuf(nullptr, 0);
    output.open(outputPath, std::ios::binary | std::ios::trunc);
    if (!output) return fail("Could not open output file for writing.");
    std::uint64_t size = 0;
    const auto write = [&](const unsigned char* bytes, std::size_t count) {
        output.write(reinterpret_cast<const char*>(bytes), static_cast<std::streamsize>(count));
        size += count;
        if (onWritten) onWritten(size);
    };
    if (const char* wrong = decryptPayload(opened, write)) return fail(wrong);
    return true;
}

bool decryptPackageTo(const PlaintextSink& sink, const std::string& containerPath, const std::string& keyText,
                      std::string& failureText) {
    OpenContainer opened;
    const char* wrong = openContainer(opened, containerPath, keyText);
    if (!wrong) wrong = decryptPayload(opened, sink);
    if (wrong) failureText = wrong;
    return wrong == nullptr;
}

bool readContainerSize(const std::string& path, std::uint64_t& payloadSize, std::string& failureText) {
    OpenContainer opened;
    const char* wrong = openContainer(opened, path);
    payloadSize = opened.header.payloadSize;
    if (wrong) failureText = wrong;
    return wrong == nullptr;
}
