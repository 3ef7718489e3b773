#include "system/json.h"

#include <gtest/gtest.h>

namespace {

std::string repeated(const std::string& text, int count) {
    std::string all;
    for (int i = 0; i < count; ++i)
        all += text;
    return all;
}

TEST(Json, OnlyOneWholeObjectIsTaken) {
    const std::string zero(1, '\0');
    const struct {
        std::string text;
        bool taken;
    } cases[] = {
        {"{}", true},
        {" \r\n\t{\"a\": 1} \n", true},
        {"\xEF\xBB\xBF{}", true},
        {"\xEF\xBB\xBF\xEF\xBB\xBF{}", false},
        {"", false},
        {" ", false},
        {"[]", false},
        {"\"text\"", false},
        {"null", false},
        {"{\"a\":1", false},
        {"{} x", false},
        {"{}{}", false},
        {"{}" + zero, false},
        {"{}" + zero + "{", false},
        {"{\"a\":1,}", false},
        {"{'a':1}", false},
        {"{\"a\":NaN}", false},
        {"{\"a\":" + repeated("[", 100000) + repeated("]", 100000) + "}", true},
        {"{\"a\":" + repeated("[", 100000), false},
        {repeated("{\"a\":", 100000) + "1" + repeated("}", 100000), true},
        {"{\"a\":\"" + std::string(1 << 20, 'x') + "\"}", true},
    };
    for (const auto& [text, taken] : cases) {
        rapidjson::Document document;
        EXPECT_EQ(parseJsonObject(text, document), taken) << text.substr(0, 40);
    }
}

TEST(Json, MemberIsATextOrNothing) {
    rapidjson::Document document;
    ASSERT_TRUE(parseJsonObject(R"({"t":"first","t":"second","zero":"a\u0000b","n":1,"o":{},"x":null,"A":"upper",)"
                                R"("u":"\u00fc\ud83d\ude00"})",
                                document));
    const std::pair<const char*, std::string> cases[] = {
        {"t", "first"},  {"zero", std::string("a\0b", 3)},  {"n", ""}, {"o", ""}, {"x", ""}, {"a", ""}, {"A", "upper"},
        {"missing", ""}, {"u", "\xC3\xBC\xF0\x9F\x98\x80"},
    };
    for (const auto& [key, text] : cases)
        EXPECT_EQ(jsonStringMember(document, key), text) << key;
    EXPECT_EQ(jsonStringMember(rapidjson::Value(rapidjson::kArrayType), "t"), "");
}

} // namespace
