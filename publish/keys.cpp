#include "publish/keys.h"

#include <cstddef>
#include <filesystem>
#include <system_error>

#include <openssl/crypto.h>
#include <openssl/pem.h>

#include "crypto/base64.h"
#include "crypto/ed25519.h"
#include "install/release_statement.h"
#include "publish/publish_platform.h"
#include "system/private_file.h"

namespace fs = std::filesystem;

namespace {

using KeyPair = std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)>;
using Memory = std::unique_ptr<BIO, decltype(&BIO_free)>;

// A callback that gives OpenSSL no passphrase. Without this callback, OpenSSL asks for a passphrase at the terminal if
// a key is encrypted.
int noPassphrase(char*, int, int, void*) {
    return -1;
}

std::string publicHalf(const EVP_PKEY* pair) {
    std::string bytes(kEd25519KeySize, '\0');
    std::size_t size = bytes.size();
    const bool got = EVP_PKEY_get_raw_public_key(pair, reinterpret_cast<unsigned char*>(bytes.data()), &size) == 1;
    return got && size == bytes.size() ? bytes : std::string();
}

bool writeKey(const std::string& path, const EVP_PKEY* pair) {
    const Memory memory(BIO_new(BIO_s_secmem()), &BIO_free);
    if (!memory || PEM_write_bio_PKCS8PrivateKey(memory.get(), pair, nullptr, nullptr, 0, nullptr, nullptr) != 1)
        return false;
    char* bytes = nullptr;
    const long size = BIO_get_mem_data(memory.get(), &bytes);
    std::string text(bytes, static_cast<std::size_t>(size));
    const bool written = writePrivateFile(path, text);
    OPENSSL_cleanse(text.data(), text.size());
    return written;
}

} // namespace

bool PublisherKey::read(const std::string& path, std::vector<std::string>& warnings, std::string& failureText) {
    const auto fail = [&](const char* what) {
        failureText = path + what;
        return false;
    };
    path_ = path;
    const Memory file(BIO_new_file(path.c_str(), "rb"), &BIO_free);
    if (!file) return fail(": this key file cannot be read.");
    pair_.reset(PEM_read_bio_PrivateKey(file.get(), nullptr, &noPassphrase, nullptr));
    if (!pair_ || !EVP_PKEY_is_a(pair_.get(), "ED25519"))
        return fail(": not an Ed25519 private key in PEM form, or protected with a passphrase.");
    publicKey_ = publicHalf(pair_.get());
    if (publicKey_.empty()) return fail(": the public key cannot be derived from this key.");
    if (othersMayRead(path))
        warnings.push_back(path + ": other users of this computer can read this key. Run chmod 600 on it.");
    return true;
}

std::string PublisherKey::sign(std::string_view text) const {
    std::string signature(kEd25519SignatureSize, '\0');
    std::size_t size = signature.size();
    const std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context(EVP_MD_CTX_new(), &EVP_MD_CTX_free);
    const bool done = context && EVP_DigestSignInit(context.get(), nullptr, nullptr, nullptr, pair_.get()) == 1 &&
                      EVP_DigestSign(context.get(), reinterpret_cast<unsigned char*>(signature.data()), &size,
                                     reinterpret_cast<const unsigned char*>(text.data()), text.size()) == 1;
    return done && size == signature.size() ? signature : std::string();
}

bool makeKeyFile(const std::string& path, bool overwrite, std::string& publicKey, std::string& failureText) {
    const auto fail = [&](const std::string& text) {
        failureText = text;
        return false;
    };
    std::error_code error;
    if (!overwrite && fs::symlink_status(path, error).type() != fs::file_type::not_found)
        return fail(path + " exists. Choose another name, or destroy the old key with --force.");
    const KeyPair pair(EVP_PKEY_Q_keygen(nullptr, nullptr, "ED25519"), &EVP_PKEY_free);
    publicKey = pair ? publicHalf(pair.get()) : std::string();
    if (publicKey.empty()) return fail("A key pair could not be made.");
    const std::string temporary = path + ".tmp";
    const bool written = writeKey(temporary, pair.get());
    if (written) fs::rename(temporary, path, error);
    if (written && !error) return true;
    fs::remove(temporary, error);
    return fail(path + ": the key file could not be written.");
}

std::string publisherKeysText(const std::vector<std::string>& publicKeys) {
    std::string text;
    for (const std::string& key : publicKeys)
        text += (text.empty() ? "" : " ") + base64Encode(key);
    return text;
}
