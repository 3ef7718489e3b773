#include <set>

#include <gtest/gtest.h>

#include "install/package_container.h"
#include "publish/container_writer.h"
#include "support/package_making.h"
#include "support/platform.h"
#include "support/temporary_folder.h"

namespace {

const std::string kKey = "0123456789abcdef0123456789abc\xFF\xFE\xFB"; // its base64 has "+" and "/"
const char kUnsupported[] = "Unsupported container format version or parameters.";
const char kWrongSize[] = "Container file size does not match declared payload size.";
const char kTampered[] = "Authentication tag verification failed: artifact has been tampered with or key is invalid.";

class Container : public testing::Test {
  protected:
    // Decrypts a package. Returns the failure text; empty on success.
    std::string decrypt(const std::string& bytes, const std::string& keyText = toBase64(kKey)) {
        folder.write("package", bytes);
        return decryptFile("package", "out", keyText);
    }
    std::string decryptFile(const char* from, const char* to, const std::string& keyText) {
        std::string failure;
        const bool ok = decryptPackage((folder / from).string(), (folder / to).string(), keyText, failure);
        EXPECT_EQ(ok, failure.empty());
        return failure;
    }

    TemporaryFolder folder;
    const std::string good = sealContainer(std::string(200, 'p'), kKey);
};

} // namespace

TEST_F(Container, IsSealedWithItsOwnNonceAndOpens) {
    std::set<std::string> nonces;
    for (const std::size_t size : {0u, 65536u, 65537u}) {
        const std::string sealed = sealContainer(std::string(size, 'p'), kKey);
        nonces.insert(sealed.substr(20, 12));
        EXPECT_EQ(decrypt(sealed), "");
        EXPECT_EQ(readFileBytes(folder / "out"), std::string(size, 'p'));
    }
    EXPECT_EQ(nonces.size(), 3u);
    if (kOnWindows) return; // the large file below would not be sparse
    const std::string large = folder.write("large", "").string();
    std::filesystem::resize_file(large, kMaxSealedBytes + 1); // a sparse file
    WrittenPackage ignored;
    std::string failure;
    EXPECT_FALSE(sealPackage(large, large + ".sealed", kKey, ignored, failure));
}

TEST_F(Container, EveryChangedByteButTheReservedOneFails) {
    for (std::size_t i = 0; i < good.size(); ++i) {
        std::string bytes = good;
        bytes[i] ^= 1;
        const char* want = i < 8     ? "Invalid container magic bytes."
                           : i < 11  ? kUnsupported
                           : i == 11 ? ""
                           : i < 20  ? kWrongSize
                                     : kTampered;
        EXPECT_EQ(decrypt(bytes), want) << i;
    }
    // The plaintext is written before the tag is checked. It stays on the disk after the failure.
    EXPECT_EQ(decrypt(good, toBase64(std::string(32, 'x'))), kTampered);
    EXPECT_EQ(readFileBytes(folder / "out").size(), 200u);
}

TEST_F(Container, EveryOtherLengthFails) {
    const std::string tooSmall = "Encrypted file is too small to contain valid container header.";
    for (std::size_t length = 0; length <= good.size() + 20; ++length) {
        std::string bytes = good;
        bytes.resize(length);
        EXPECT_EQ(decrypt(bytes), length == good.size() ? "" : length < 48 ? tooSmall : kWrongSize) << length;
    }
    std::string bytes = good.substr(0, 48);
    bytes.replace(12, 8, "\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xD0"); // a payload size that overflows to 0 if 48 is added
    EXPECT_EQ(decrypt(bytes), kWrongSize);
    bytes[8] = 2;
    EXPECT_EQ(decrypt(bytes), kUnsupported) << "the format is checked before the size";
}

TEST_F(Container, ReadsKeysInBothAlphabetsAndSkipsForeignBytes) {
    const std::string key = toBase64(kKey); // 43 digits and "="
    const std::string bare = key.substr(0, 43);
    std::string urlSafe = key;
    for (char& c : urlSafe)
        c = c == '+' ? '-' : c == '/' ? '_' : c;
    for (const std::string& text : {urlSafe, bare, key.substr(0, 20) + "\r\n\t.!" + key.substr(20), bare + "=AAAA"})
        EXPECT_EQ(decrypt(good, text), "") << text;
    const std::string wrongLength = "Invalid decryption key length.";
    for (const std::string& text :
         {bare + "A", bare.substr(0, 42), key.substr(0, 20) + "=" + key.substr(20), std::string("!\"$%&()*,~\xC3\xA9")})
        EXPECT_EQ(decrypt(good, text), wrongLength) << text;

    EXPECT_EQ(decryptFile("missing", "new", ""), wrongLength) << "the key is checked before the files";
    EXPECT_EQ(decryptFile("missing", "new", key), "Could not open encrypted file for reading.");
    EXPECT_FALSE(std::filesystem::exists(folder / "new"));
    EXPECT_EQ(decryptFile("package", "no/new", key), "Could not open output file for writing.");
}
