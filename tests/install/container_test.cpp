#include <gtest/gtest.h>

#include "install/package_container.h"
#include "support/package_making.h"
#include "support/temporary_folder.h"

namespace {

const std::string kKey = "0123456789abcdef0123456789abc\xFF\xFE\xFB"; // has both special digits in base64
const char kTampered[] = "Authentication tag verification failed: artifact has been tampered with or key is invalid.";

class Container : public testing::Test {
  protected:
    // The failure text, or empty.
    std::string decrypt(const std::string& bytes, const std::string& keyText = toBase64(kKey)) {
        folder.write("package", bytes);
        std::string failure;
        const bool ok = decryptPackage((folder / "package").string(), (folder / "out").string(), keyText, failure);
        EXPECT_EQ(ok, failure.empty());
        return failure;
    }
    std::string output() const { return readFileBytes(folder / "out"); }

    TemporaryFolder folder;
};

} // namespace

TEST_F(Container, NoByteButTheReservedOneCanChange) {
    const std::string good = sealContainer(std::string(200, 'p'), kKey);
    for (std::size_t i = 0; i < good.size(); ++i) {
        for (const int bit : {0, 7}) {
            std::string bytes = good;
            bytes[i] = static_cast<char>(bytes[i] ^ 1 << bit);
            const char* want = i < 8     ? "Invalid container magic bytes."
                               : i < 11  ? "Unsupported container format version or parameters."
                               : i == 11 ? ""
                               : i < 20  ? "Container file size does not match declared payload size."
                                         : kTampered;
            EXPECT_EQ(decrypt(bytes), want) << i;
        }
    }
    // The plaintext was written before the tag could be checked, and stays.
    std::string bytes = good;
    bytes[40] ^= 1;
    EXPECT_EQ(decrypt(bytes), kTampered);
    EXPECT_EQ(output(), std::string(8, 'p') + 'q' + std::string(191, 'p'));
    EXPECT_EQ(decrypt(good, toBase64(std::string(32, 'x'))), kTampered);
}

TEST_F(Container, NoOtherLengthPasses) {
    const std::string good = sealContainer(std::string(200, 'p'), kKey);
    for (std::size_t length = 0; length <= good.size() + 20; ++length) {
        if (length == good.size()) continue;
        std::string bytes = good;
        bytes.resize(length);
        EXPECT_EQ(decrypt(bytes), length < 48 ? "Encrypted file is too small to contain valid container header."
                                              : "Container file size does not match declared payload size.")
            << length;
    }
    // A declared size that wraps around when the overhead is added.
    std::string bytes = good;
    bytes.replace(12, 8, "\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xD0");
    bytes.resize(48);
    EXPECT_EQ(decrypt(bytes), "Container file size does not match declared payload size.");
    // The format is judged before the size.
    bytes[8] = 2;
    EXPECT_EQ(decrypt(bytes), "Unsupported container format version or parameters.");
}

TEST_F(Container, ReadsKeysAsPeoplePasteThem) {
    const std::string container = sealContainer("secret", kKey);
    const std::string key = toBase64(kKey); // 43 digits and "="
    std::string urlSafe = key;
    for (char& c : urlSafe)
        c = c == '+' ? '-' : c == '/' ? '_' : c;
    ASSERT_NE(urlSafe, key);
    const std::string bare = key.substr(0, 43);
    const std::string wrongLength = "Invalid decryption key length.";
    for (const std::string& text : {key, urlSafe, bare, "  " + key.substr(0, 20) + "\r\n\t.!" + key.substr(20) + "\n",
                                    bare + "=AAAA"}) // "=" ends it
        EXPECT_EQ(decrypt(container, text), "") << text;
    for (const std::string& text : {bare + "A", bare.substr(0, 42), key.substr(0, 20) + "=" + key.substr(20),
                                    std::string(), "=" + key, std::string("!\"$%&()*,.:;<>?@[]^`{|}~\xC3\xA9")})
        EXPECT_EQ(decrypt(container, text), wrongLength) << text;

    // The key is judged before any file is touched.
    std::string failure;
    EXPECT_FALSE(decryptPackage((folder / "missing").string(), (folder / "new").string(), "", failure));
    EXPECT_EQ(failure, wrongLength);
    EXPECT_FALSE(decryptPackage((folder / "missing").string(), (folder / "new").string(), key, failure));
    EXPECT_EQ(failure, "Could not open encrypted file for reading.");
    EXPECT_FALSE(std::filesystem::exists(folder / "new"));
    EXPECT_FALSE(decryptPackage((folder / "package").string(), (folder / "no/new").string(), key, failure));
    EXPECT_EQ(failure, "Could not open output file for writing.");
}
