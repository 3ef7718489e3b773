#include "ui/ui_fonts.h"

#include <gtest/gtest.h>

#include "ui/ui_host_fonts.h"

TEST(WindowsFonts, AnInstalledFontHasEveryLetterAndNoneHasAnUnassignedCharacter) {
    for (const std::uint32_t letter : {0xE9u, 0x416u, 0x3A9u}) { // Latin, Cyrillic, Greek
        const std::unique_ptr<SystemFont> font = findSystemFont(letter);
        ASSERT_NE(font, nullptr) << letter;
        EXPECT_TRUE(isUsableFontFile(font->file, font->faceIndex)) << letter;
    }
    EXPECT_EQ(findSystemFont(0x0378), nullptr);
}
