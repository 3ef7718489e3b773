#include "ui/ui_theme.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include <gtest/gtest.h>
#include <imgui_internal.h>

#include "support/platform.h"
#include "support/temporary_folder.h"
#include "support/ui_frames.h"
#include "ui/ui_fonts.h"
#include "ui/ui_host_fonts.h"
#include "ui/ui_integration.h"
#include "ui/ui_popups.h"
#include "ui/ui_text.h"

namespace {

constexpr const char* kFontFile = UI_TEST_FONT;

// A Dear ImGui context with the theme initialised.
struct Themed : UiFrames {
    explicit Themed(float scale = 1.0f, const std::string& fontPath = kFontFile) {
        integration.fontPath = fontPath;
        uiThemeSetScale(scale);
        uiThemeInitialize(&integration);
    }
    ~Themed() { uiThemeShutdown(); }
    void frame(const std::function<void(ImDrawList&)>& draw) {
        build([&](ImDrawList& list) {
            uiThemeApplyStyle();
            draw(list);
        });
        takeTextures();
    }
    UiIntegration integration;
};

} // namespace

TEST(Theme, FollowsAChangeOfScaleInTheSameFrame) {
    Themed themed;
    themed.frame([](ImDrawList&) {
        ImFont* early = uiThemeFont(13.5f);
        const float padding = ImGui::GetStyle().FramePadding.y;
        for (const float scale : {1.25f, 3.3f, 1.0f}) {
            uiThemeSetScale(scale);
            uiThemeApplyStyle();
            EXPECT_FLOAT_EQ(early->LegacySize, 13.5f * scale) << "a font from before the change";
            EXPECT_NEAR(uiThemeTextSize(uiThemeFont(22.0f), "Projects").y, 22.0f * scale, 1e-3);
            EXPECT_FLOAT_EQ(ImGui::GetFontSize(), std::round(14.0f * scale)) << "Dear ImGui's own widgets";
            EXPECT_NEAR(ImGui::GetStyle().FramePadding.y, padding * scale, 1.0f) << "scaled more than once";
        }
    });
}

TEST(ThemeFonts, AnUnusableFileGivesTheBuiltInFont) {
    const TemporaryFolder folder;
    const std::string whole = readFileBytes(kFontFile);
    for (const std::string& bytes : {std::string(), whole.substr(0, 40), whole.substr(0, 300),
                                     whole.substr(0, whole.size() - 8), "ttcf" + whole}) {
        Themed themed(1.0f, folder.write("ünusable", bytes).string());
        EXPECT_STREQ(uiThemeFont(15)->GetDebugName(), "ProggyClean.ttf") << bytes.size();
    }
}

TEST(ThemeFonts, CharactersThatTheFontLacksComeFromTheSystem) {
    constexpr ImWchar kZhe = 0x0416; // the built-in font has no Cyrillic letters
    const std::unique_ptr<SystemFont> font = findSystemFont(kZhe);
    if (!kOnWindows && !font) GTEST_SKIP() << "no system font has the character";
    ASSERT_TRUE(font && isUsableFontFile(font->file, font->faceIndex));
    EXPECT_EQ(findSystemFont(0x0378), nullptr) << "an unassigned character";
    Themed themed(1.0f, "");
    themed.frame([](ImDrawList&) {
        ImFontBaked* baked = uiThemeFont(22)->GetFontBaked(22);
        const ImFontGlyph* zhe = baked->FindGlyphNoFallback(kZhe);
        ASSERT_TRUE(zhe && zhe->Visible);
        EXPECT_NEAR(zhe->Y1 - zhe->Y0, 22 * 0.7f, 22 * 0.3f);
        EXPECT_FALSE(baked->FindGlyphNoFallback(0xE123)) << "private characters differ from font to font";
    });
}

TEST(ThemeText, IsSharpInEverySizeAndScale) {
    for (const float scale : {1.0f, 1.25f, 1.5f, 3.0f}) {
        Themed themed(scale);
        themed.frame([&](ImDrawList& list) {
            for (const float size : {11.0f, 12.5f, 13.5f, 16.5f, 22.0f})
                uiThemeText(&list, uiThemeFont(size), {60.0f, 80.0f}, uiThemeForeground(), "Projects");
            ASSERT_GT(list.VtxBuffer.Size, 0);
            for (const ImDrawVert& corner : list.VtxBuffer)
                EXPECT_NEAR(corner.pos.y, std::round(corner.pos.y), 0.01f) << "not on a whole pixel at " << scale;
        });
        EXPECT_EQ(uiThemePx(30.0f), std::round(30.0f * scale)) << "edges are on whole pixels";
        EXPECT_FLOAT_EQ(uiThemePx(6.5f), 6.5f * scale);
    }
}

TEST(Popups, FadeInAndStayInsideAShrinkingWindow) {
    Themed themed;
    const auto frame = [&](ImVec2 size) -> const ImGuiWindow& {
        ImGui::GetIO().DisplaySize = size;
        themed.frame([&](ImDrawList&) {
            if (!ImGui::IsPopupOpen("popup")) ImGui::OpenPopup("popup");
            ImGui::SetNextWindowPos(size * 0.5f, ImGuiCond_Appearing, {0.5f, 0.5f});
            if (!uiThemeBeginModal("popup")) return;
            ImGui::Dummy({460.0f, 300.0f});
            uiThemeEndPopup();
        });
        return *ImGui::FindWindowByName("popup");
    };
    ImU32 firstAlpha = 255, alpha = 0;
    for (int i = 0; i < 30; ++i) {
        const ImGuiWindow& popup = frame({1590.0f, 940.0f});
        EXPECT_TRUE(i == 0 || popup.Rect().Max.x > 900.0f);
        if (popup.DrawList->VtxBuffer.empty()) continue; // Dear ImGui hides a popup until it knows its size
        alpha = popup.DrawList->VtxBuffer.front().col >> IM_COL32_A_SHIFT;
        firstAlpha = std::min(firstAlpha, alpha);
    }
    EXPECT_LT(firstAlpha, 180u);
    EXPECT_EQ(alpha, 255u);
    frame({900.0f, 560.0f});
    EXPECT_TRUE(ImRect(0, 0, 900, 560).Contains(frame({900.0f, 560.0f}).Rect()));
}

TEST(ThemeText, WrappedLinesKeepAddressesWholeAndLeaveNoSingleWord) {
    Themed themed;
    themed.frame([](ImDrawList&) {
        ImFont* font = uiThemeFont(16.0f);
        const auto subtitle = wrapText(font, "Manage all your projects and editor installations in one app.", 320.0f);
        ASSERT_EQ(subtitle.size(), 2u);
        EXPECT_GT(subtitle[1].size(), 20u) << subtitle[1];
        const auto address = wrapText(font, "The server is busy; see https://example.org/status.", 300.0f);
        EXPECT_EQ(address.back(), "https://example.org/status.");
        for (const std::string_view line : wrapText(font, "https://example.org/a-very-long-path/that-is-cut", 150.0f))
            EXPECT_LE(uiThemeTextSize(font, line).x, 150.0f);
        EXPECT_EQ(wrapText(font, "a\n\nb", 100.0f).size(), 3u) << "an empty line stays";
    });
}
