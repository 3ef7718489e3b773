// The vectors of RFC 4648 and RFC 7636.

#include "signin/pkce.h"

#include <cctype>

#include <gtest/gtest.h>

namespace {

TEST(Pkce, ChallengeOfTheStandardsExample) {
    EXPECT_EQ(base64UrlEncode(sha256Bytes("dBjftJeZ4CVP-mB92K27uhbUJU1p1r_wW1gFWFOEjXk")),
              "E9Melhoa2OwvFrEMTJguCHaoeK1t8URWbuGJSstw-cM");
    EXPECT_EQ(base64UrlEncode(sha256Bytes("")), "47DEQpj8HBSa-_TImW-5JCeuQeRkm5NMpJWZG3hSuFU");
}

TEST(Pkce, Base64HasNoPaddingAndTheSafeAlphabet) {
    const std::pair<std::vector<std::uint8_t>, const char*> cases[] = {
        {{}, ""}, {{'f'}, "Zg"}, {{'f', 'o'}, "Zm8"}, {{'f', 'o', 'o'}, "Zm9v"}, {{3, 236, 255, 224, 193}, "A-z_4ME"},
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

} // namespace
