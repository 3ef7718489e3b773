#include "ui/ui_theme.h"

#include <cmath>
#include <optional>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>
#include <imgui_internal.h>

#include "support/temporary_folder.h"
#include "support/ui_frames.h"
#include "ui/ui_fonts.h"
#include "ui/ui_integration.h"
#include "ui/ui_palette.h"
#include "ui/ui_popups.h"
#include "ui/ui_host_fonts.h"

namespace {

constexpr const char* kFontFile = UI_TEST_FONT;

// A context with the theme in it, as the program has it after its first frame's begin.
struct Themed : UiFrames {
    explicit Themed(float scale = 1.0f, const std::string& fontPath = kFontFile) {
        integration.fontPath = fontPath;
        uiThemeSetScale(scale);
        uiThemeInitialize(&integration);
    }
    ~Themed() { uiThemeShutdown(); }
    template<typename Draw>
    void frame(const Draw& draw, float seconds = 1.0f / 60.0f) {
        ImGui::GetIO().DeltaTime = seconds;
        build([&](ImDrawList& list) {
            uiThemeApplyStyle();
            draw(list);
        });
        takeTextures();
    }
    UiIntegration integration;
};

// How opaque the deepest layer of a window is; nothing while it does not show.
std::optional<float> opacity(const char* name) {
    for (const ImDrawList* list : ImGui::GetDrawData()->CmdLists)
        if (std::string_view(list->_OwnerName).starts_with(name))
            return static_cast<float>(list->VtxBuffer.front().col >> IM_COL32_A_SHIFT) / 255.0f;
    return std::nullopt;
}

double luminance(ImU32 colour) {
    const auto channel = [&](int shift) {
        const double value = ((colour >> shift) & 0xFFu) / 255.0;
        return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * channel(IM_COL32_R_SHIFT) + 0.7152 * channel(IM_COL32_G_SHIFT) + 0.0722 * channel(IM_COL32_B_SHIFT);
}
double contrast(ImU32 a, ImU32 b) {
    const auto [low, high] = std::minmax({luminance(a), luminance(b)});
    return (high + 0.05) / (low + 0.05);
}

} // namespace

// --- fonts -----------------------------------------------------------------------------------------------------------

TEST(ThemeFonts, HaveTheirNominalSizeAtEveryScaleAtOnce) {
    Themed themed;
    themed.frame([](ImDrawList&) {
        ImFont* early = uiThemeFont(13.5f);
        for (const float scale : {1.0f, 1.25f, 2.0f, 3.3f, 1.0f}) {
            uiThemeSetScale(scale);
            uiThemeApplyStyle();
            EXPECT_FLOAT_EQ(early->LegacySize, 13.5f * scale) << "a font that was handed out before the change";
            for (const float nominal : {11.0f, 12.5f, 22.0f}) {
                EXPECT_FLOAT_EQ(uiThemeFontSize(uiThemeFont(nominal)), nominal * scale);
                EXPECT_NEAR(uiThemeTextSize(uiThemeFont(nominal), "Projects").y, nominal * scale, 1e-3);
            }
            EXPECT_FLOAT_EQ(ImGui::GetFontSize(), std::round(14.0f * scale)) << "stock widgets, in this very frame";
        }
    });
    themed.frame([](ImDrawList&) {
        uiThemeSetScale(1.5f);
        uiThemeApplyStyle();
    });
    themed.build([](ImDrawList&) { EXPECT_FLOAT_EQ(ImGui::GetFontSize(), 21.0f) << "from the first moment"; });
}

TEST(ThemeFonts, AnUnusableFileGivesTheBuiltInFont) {
    const TemporaryFolder folder;
    const std::string whole = readFileBytes(kFontFile);
    ASSERT_GT(whole.size(), 10'000u);
    const auto isUsable = [](const std::string& text) {
        return isUsableFontFile(std::span(reinterpret_cast<const unsigned char*>(text.data()), text.size()));
    };
    EXPECT_TRUE(isUsable(whole));
    EXPECT_FALSE(isUsable("ttcf" + whole));
    std::vector<std::string> paths = {"/does/not/exist.ttf", folder.string()};
    for (const std::size_t kept : {std::size_t{0}, std::size_t{3}, std::size_t{12}, std::size_t{40}, std::size_t{300},
                                   whole.size() / 2, whole.size() - 8}) {
        EXPECT_FALSE(isUsable(whole.substr(0, kept))) << kept;
        paths.push_back(folder.write("ünusable " + std::to_string(kept), whole.substr(0, kept)).string());
    }
    for (const std::string& path : paths) {
        Themed themed(1.0f, path);
        themed.frame([](ImDrawList&) {
            EXPECT_STREQ(uiThemeFont(15)->GetDebugName(), "ProggyClean.ttf");
            EXPECT_FLOAT_EQ(uiThemeFont(15)->LegacySize, 15.0f);
        });
    }
}

TEST(ThemeFonts, CharactersThatTheFileLacksComeFromTheSystem) {
    constexpr ImWchar kKnight = 0x265E;
    if (!findSystemFont(kKnight)) GTEST_SKIP() << "no system font has the character";
    Themed themed;
    themed.frame([](ImDrawList&) {
        ImFontBaked* baked = uiThemeFont(22)->GetFontBaked(22);
        const ImFontGlyph* knight = baked->FindGlyphNoFallback(kKnight);
        ASSERT_TRUE(knight && knight->Visible);
        EXPECT_NEAR(knight->Y1 - knight->Y0, 22 * 0.85f, 22 * 0.45f);
        EXPECT_FALSE(baked->FindGlyphNoFallback(0xE123)) << "a private character means something else to each font";
    });
}

// --- text ------------------------------------------------------------------------------------------------------------

TEST(ThemeText, StandsOnWholePixelsInEverySizeAndScale) {
    for (const float scale : {1.0f, 1.25f, 1.5f, 2.0f, 3.0f}) {
        Themed themed(scale);
        themed.frame([&](ImDrawList& list) { // which clips nothing
            for (const float size : {11.0f, 11.5f, 12.5f, 13.5f, 14.0f, 16.5f, 22.0f}) {
                const int before = list.VtxBuffer.Size;
                uiThemeText(&list, uiThemeFont(size), {60.0f, 80.0f}, uiThemeForeground(), "Projects");
                ASSERT_GT(list.VtxBuffer.Size, before);
                for (int i = before; i < list.VtxBuffer.Size; ++i) {
                    const float y = list.VtxBuffer[i].pos.y;
                    EXPECT_NEAR(y, std::round(y), 0.01f) << size << " at " << scale;
                }
            }
        });
        for (const float units : {1.0f, 30.0f, 126.0f, 210.0f})
            EXPECT_EQ(uiThemePx(units), std::round(units * scale));
        EXPECT_FLOAT_EQ(uiThemePx(6.5f), 6.5f * scale) << "what is not an edge stays exact";
    }
}

// --- style and colours -----------------------------------------------------------------------------------------------

TEST(ThemeStyle, LeavesNoColourOfDearImGuisOwnAndScalesOnce) {
    Themed themed;
    themed.frame([](ImDrawList&) {
        ImGuiStyle& style = ImGui::GetStyle();
        std::fill(std::begin(style.Colors), std::end(style.Colors), ImVec4(-1, -1, -1, -1));
        const float padding = style.FramePadding.y;
        uiThemeSetScale(2.0f);
        for (int i = 0; i < 3; ++i)
            uiThemeApplyStyle();
        for (int i = 0; i < ImGuiCol_COUNT; ++i)
            EXPECT_GE(style.Colors[i].w, 0.0f) << ImGui::GetStyleColorName(i);
        EXPECT_FLOAT_EQ(style.FramePadding.y, 2.0f * padding);
    });
}

TEST(ThemeColours, TextIsLegibleOnEverySurfaceItIsSetOn) {
    using namespace palette;
    constexpr ImU32 kContent = 0xFF1A1A1A; // the screens' own surfaces
    constexpr ImU32 kContentCard = 0xFF222020;
    for (const ImU32 surface : {kBackground, kCard, kPopup, kContent, kContentCard}) {
        for (const ImU32 text : {kForeground, kMuted, kDestructive, kPrimaryLight})
            EXPECT_GE(contrast(text, surface), 4.5) << std::hex << text << " on " << surface;
        EXPECT_GE(contrast(kPrimaryLight, surface), 3.0) << "the ring around what has the keyboard";
    }
    for (const ImU32 surface : {kWell, kWellHovered, kControl, kControlHovered, kControlHeld})
        EXPECT_GE(contrast(kForeground, surface), 4.5) << std::hex << surface;
    for (const ImU32 surface : {kWell, kWellHovered})
        EXPECT_GE(contrast(kMuted, surface), 4.5) << "hints";
    for (const BadgeColours& badge : kBadges)
        EXPECT_GE(contrast(badge.text, badge.fill), 4.5);
    for (const ImU32 surface : {kPrimary, kPrimaryHovered, kPrimaryHeld})
        EXPECT_GE(contrast(kOnPrimary, surface), 4.5) << std::hex << surface;
    EXPECT_NEAR(contrast(0xFF000000, 0xFFFFFFFF), 21.0, 0.01);
}

// --- motion ----------------------------------------------------------------------------------------------------------

TEST(Popups, ComeUpInTheSameTimeAtEveryRateAndThenStandStill) {
    for (const bool modal : {false, true}) {
        for (const float rate : {20.0f, 60.0f, 240.0f}) {
            Themed themed;
            float shownFor = 0.0f;
            std::vector<float> seen;
            for (int i = 0; i < 200 && shownFor < 0.3f; ++i) {
                themed.frame(
                    [&](ImDrawList&) {
                        if (i == 0) ImGui::OpenPopup("popup");
                        if (modal ? uiThemeBeginModal("popup") : uiThemeBeginMenu("popup")) {
                            ImGui::TextUnformatted("text");
                            uiThemeEndPopup();
                        }
                    },
                    1.0f / rate);
                const auto now = opacity(modal ? "popup" : "##Popup");
                if (!now) continue;
                if (!seen.empty()) {
                    shownFor += 1.0f / rate;
                    EXPECT_GE(*now, seen.back());
                }
                seen.push_back(*now);
                if (shownFor > 0.2f) {
                    EXPECT_EQ(*now, 1.0f) << rate;
                }
            }
            ASSERT_GT(shownFor, 0.2f) << "it never showed";
            EXPECT_LT(seen.front(), 0.7f) << rate;
        }
    }
}
