#include "publish/container_writer.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string_view>
#include <system_error>
#include <vector>

#include <openssl/evp.h>

#include "crypto/random_bytes.h"
#include "crypto/sha256.h"
#include "install/package_container.h"

namespace {

constexpr std::size_t kChunkSize = 65536;
constexpr char kWriting[] = "writing the package"; // name of the step in progress messages

const unsigned char* asBytes(const std::string& text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}

// Writes the package file and computes its hash at the same time.
class PackageOutput {
  public:
    explicit PackageOutput(const std::string& path)
        : path_(path) {
        file_.rdbuf()->pubsetbuf(nullptr, 0); // unbuffered, because the chunks are large
        file_.open(path, std::ios::binary | std::ios::trunc);
    }

    void write(const void* bytes, std::size_t count) {
        file_.write(static_cast<const char*>(bytes), static_cast<std::streamsize>(count));
        digest_.update(bytes, count);
        size_ += count;
    }

    [[nodiscard]] bool finish(WrittenPackage& written, std::string& failureText) {
        file_.close();
        written.size = size_;
        written.sha256 = digest_.finish();
        if (file_.good() && !written.sha256.empty()) return true;
        failureText = path_ + " could not be written.";
        return false;
    }

  private:
    std::string path_;
    std::ofstream file_;
    Sha256 digest_;
    std::uint64_t size_ = 0;
};

// Passes the bytes of a file to `take` and computes their hash. If `take` returns false, stops, returns false and sets
// `failureText`.
[[nodiscard]] bool readChunks(const std::string& path,
                              const std::function<bool(const unsigned char* bytes, std::size_t count)>& take,
                              std::string& sha256, std::string& failureText, const char* step,
                              const Progress& progress) {
    std::error_code ignored;
    const std::uint64_t total = std::filesystem::file_size(path, ignored);
    std::uint64_t done = 0;
    std::ifstream file;
    file.rdbuf()->pubsetbuf(nullptr, 0);
    file.open(path, std::ios::binary);
    Sha256 digest;
    std::vector<char> buffer(kChunkSize);
    bool good = file.is_open();
    while (good && file) {
        file.read(buffer.data(), static_cast<std::streamsize>(buffer.size()));
        const auto count = static_cast<std::size_t>(file.gcount());
        digest.update(buffer.data(), count);
        done += count;
        if (progress) progress(step, done, total);
        good = take(reinterpret_cast<const unsigned char*>(buffer.data()), count);
    }
    sha256 = digest.finish();
    if (good && file.eof() && !file.bad() && !sha256.empty()) return true;
    failureText = path + " could not be read to its end.";
    return false;
}

std::array<unsigned char, container::kHeaderSize> makeHeader(std::uint64_t payloadSize, std::string_view nonce) {
    std::array<unsigned char, container::kHeaderSize> header{};
    std::copy(container::kMagic.begin(), container::kMagic.end(), header.begin());
    const std::size_t format = container::kMagic.size();
    header[format] = container::kFormatVersion;
    header[format + 1] = container::kNonceSize;
    header[format + 2] = container::kTagSize;
    for (std::size_t i = container::kNonceOffset; i-- > container::kSizeOffset; payloadSize >>= 8)
        header[i] = static_cast<unsigned char>(payloadSize & 0xFF);
    std::copy(nonce.begin(), nonce.end(), header.begin() + container::kNonceOffset);
    return header;
}

} // namespace

bool copyPackage(const std::string& zipPath, const std::string& outputPath, WrittenPackage& written,
                 std::string& failureText, const Progress& progress) {
    PackageOutput output(outputPath);
    const auto copy = [&](const unsigned char* bytes, std::size_t count) {
        output.write(bytes, count);
        return true;
    };
    return readChunks(zipPath, copy, written.plaintextSha256, failureText, kWriting, progress) &&
           output.finish(written, failureText);
}

bool sealPackage(const std::string& zipPath, const std::string& outputPath, const std::string& key,
                 WrittenPackage& written, std::string& failureText, const Progress& progress) {
    const auto fail = [&](const std::string& text) {
        failureText = text;
        return false;
    };
    std::error_code error;
    const std::uint64_t payloadSize = std::filesystem::file_size(zipPath, error);
    if (error) return fail(zipPath + " cannot be read.");
    if (payloadSize > kMaxSealedBytes) return fail(zipPath + " is too large for one container (64 GiB).");

    const std::string nonce = randomBytes(container::kNonceSize);
    std::array<unsigned char, container::kTagSize> tag{};
    const std::unique_ptr<EVP_CIPHER_CTX, decltype(&EVP_CIPHER_CTX_free)> cipher(EVP_CIPHER_CTX_new(),
                                                                                 &EVP_CIPHER_CTX_free);
    if (!cipher || key.size() != container::kKeySize || nonce.empty() ||
        EVP_EncryptInit_ex(cipher.get(), EVP_aes_256_gcm(), nullptr, asBytes(key), asBytes(nonce)) != 1)
        return fail("AES-256-GCM could not be set up.");

    PackageOutput output(outputPath);
    output.write(makeHeader(payloadSize, nonce).data(), container::kHeaderSize);
    std::vector<unsigned char> ciphertext(kChunkSize + container::kTagSize);
    std::uint64_t sealed = 0;
    int produced = 0;
    const auto seal = [&](const unsigned char* bytes, std::size_t count) {
        if (EVP_EncryptUpdate(cipher.get(), ciphertext.data(), &produced, bytes, static_cast<int>(count)) != 1)
            return false;
        output.write(ciphertext.data(), static_cast<std::size_t>(produced));
        sealed += count;
        return sealed <= payloadSize;
    };
    if (!readChunks(zipPath, seal, written.plaintextSha256, failureText, kWriting, progress)) return false;
    if (sealed != payloadSize) return fail(zipPath + " changed while it was read.");
    if (EVP_EncryptFinal_ex(cipher.get(), ciphertext.data(), &produced) != 1 ||
        EVP_CIPHER_CTX_ctrl(cipher.get(), EVP_CTRL_GCM_GET_TAG, container::kTagSize, tag.data()) != 1)
        return fail("The container could not be sealed.");
    output.write(tag.data(), tag.size());
    return output.finish(written, failureText);
}

std::string hashFile(const std::string& path, const char* step, const Progress& progress) {
    std::string sha256;
    std::string ignored;
    const auto pass = [](const unsigned char*, std::size_t) { return true; };
    return readChunks(path, pass, sha256, ignored, step, progress) ? sha256 : std::string();
}
