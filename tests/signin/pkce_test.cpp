// The vectors of RFC 4648 and RFC 7636, and what happens without randomness.

#define OPENSSL_SUPPRESS_DEPRECATED // a failing source of randomness can be put in place in the old way only

#include "signin/pkce.h"

#include <cctype>
#include <set>

#include <gtest/gtest.h>
#include <openssl/rand.h>

namespace {

std::vector<std::uint8_t> bytesOf(const std::string& text) {
    return {text.begin(), text.end()};
}

TEST(Pkce, ChallengeOfTheStandardsExample) {
    EXPECT_EQ(base64UrlEncode(sha256Bytes("dBjftJeZ4CVP-mB92K27uhbUJU1p1r_wW1gFWFOEjXk")),
              "E9Melhoa2OwvFrEMTJguCHaoeK1t8URWbuGJSstw-cM");
    EXPECT_EQ(base64UrlEncode(sha256Bytes("")), "47DEQpj8HBSa-_TImW-5JCeuQeRkm5NMpJWZG3hSuFU");
}

TEST(Pkce, Base64HasNoPaddingAndTheSafeAlphabet) {
    const struct {
        std::vector<std::uint8_t> bytes;
        const char* text;
    } cases[] = {
        {{}, ""},
        {bytesOf("f"), "Zg"},
        {bytesOf("fo"), "Zm8"},
        {bytesOf("foo"), "Zm9v"},
        {bytesOf("foobar"), "Zm9vYmFy"},
        {{3, 236, 255, 224, 193}, "A-z_4ME"},
        {{0xFF, 0xFF, 0xFF, 0xFF}, "_____w"},
        {{0, 0, 0}, "AAAA"},
        {{0xFB, 0xEF, 0xBE}, "----"},
    };
    for (const auto& [bytes, text] : cases)
        EXPECT_EQ(base64UrlEncode(bytes), text);
}

TEST(Pkce, PercentEncodingLeavesExactlyTheUnreservedBytes) {
    for (int value = 0; value < 256; ++value) {
        const char character = static_cast<char>(value);
        char expected[4] = {character, 0, 0, 0};
        const bool unreserved = value < 128 && (std::isalnum(value) != 0 || std::string("-_.~").find(character) < 4);
        if (!unreserved) std::snprintf(expected, sizeof expected, "%%%02X", static_cast<unsigned>(value));
        EXPECT_EQ(percentEncode(std::string(1, character)), expected) << value;
    }
    EXPECT_EQ(percentEncode("openid email"), "openid%20email");
    EXPECT_EQ(percentEncode("\xC3\xBC+"), "%C3%BC%2B") << "byte by byte";
}

TEST(Pkce, TokensHaveTheirLengthAndDoNotRepeat) {
    std::set<std::string> seen;
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ(randomUrlToken(48).size(), 64u);
        seen.insert(randomUrlToken(16));
        EXPECT_EQ(seen.rbegin()->size(), 22u);
    }
    EXPECT_EQ(seen.size(), 100u);
}

TEST(Pkce, NoRandomnessGivesNoToken) {
    RAND_METHOD broken = *RAND_OpenSSL();
    broken.bytes = [](unsigned char*, int) { return 0; };
    RAND_set_rand_method(&broken);
    const std::string token = randomUrlToken(48);
    RAND_set_rand_method(nullptr);
    EXPECT_EQ(token, "");
    EXPECT_NE(randomUrlToken(48), "");
}

} // namespace
