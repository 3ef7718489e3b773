// What moves, what stays put, and what stays sharp.

#include <cmath>
#include <optional>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>
#include <imgui_internal.h>

#include "support/ui_frames.h"
#include "ui/ui_integration.h"
#include "ui/ui_palette.h"
#include "ui/ui_popups.h"
#include "ui/ui_theme.h"

namespace {

struct Screen : UiFrames {
    explicit Screen(float scale = 1.0f) {
        integration.fontPath = UI_TEST_FONT;
        uiThemeSetScale(scale);
        uiThemeInitialize(&integration);
    }
    ~Screen() { uiThemeShutdown(); }

    template<typename Draw>
    void frame(const Draw& draw, float seconds = 1.0f / 60.0f) {
        ImGui::GetIO().DeltaTime = seconds;
        build([&](ImDrawList&) {
            uiThemeApplyStyle();
            ImGui::Begin("screen");
            draw();
            ImGui::End();
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

TEST(Popups, ComeUpInTheSameTimeAtEveryRateAndThenStandStill) {
    for (const bool modal : {false, true}) {
        for (const float rate : {20.0f, 60.0f, 240.0f}) {
            Screen screen;
            float shownFor = 0.0f;
            std::vector<float> seen;
            for (int i = 0; i < 200 && shownFor < 0.3f; ++i) {
                screen.frame(
                    [&] {
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

TEST(Reveal, CoversChildrenToo) {
    Screen screen;
    uiThemeTick(0.0f);
    for (const bool ended : {false, true}) {
        for (int i = 0; i < 3; ++i) // a child takes its time to show
            screen.frame([] {
                ImGui::BeginChild("child", {90.0f, 20.0f});
                ImGui::TextUnformatted("rows");
                ImGui::EndChild();
                uiThemeReveal(ImGui::GetWindowDrawList(), {0.0f, 0.0f}, {800.0f, 600.0f});
            });
        EXPECT_EQ(opacity("screen/child"), ended ? 1.0f : 0.0f);
        uiThemeTick(1.0f);
    }
}

TEST(Popups, DoNotInheritTheSpacingOfTheScreen) {
    for (const float scale : {1.0f, 2.0f}) {
        Screen screen(scale);
        float pitch = 0.0f;
        for (int i = 0; i < 3; ++i)
            screen.frame([&] {
                ImGui::PushStyleVar(ImGuiStyleVar_ItemSpacing, ImVec2(0.0f, 0.0f));
                if (i == 0) ImGui::OpenPopup("menu");
                if (uiThemeBeginMenu("menu")) {
                    ImGui::MenuItem("one");
                    const float first = ImGui::GetItemRectMin().y;
                    ImGui::MenuItem("two");
                    pitch = ImGui::GetItemRectMin().y - first;
                    uiThemeEndPopup();
                }
                EXPECT_EQ(ImGui::GetStyle().ItemSpacing.y, 0.0f) << "given back";
                ImGui::PopStyleVar();
            });
        EXPECT_GE(pitch, 26.0f * scale);
    }
}

TEST(Sharpness, TextStandsOnWholePixelsInEverySizeAndScale) {
    for (const float scale : {1.0f, 1.25f, 1.5f, 2.0f, 3.0f}) {
        Screen screen(scale);
        screen.frame([&] {
            for (const float size : {11.0f, 11.5f, 12.5f, 13.5f, 14.0f, 16.5f, 22.0f}) {
                ImDrawList& list = *ImGui::GetBackgroundDrawList(); // clips nothing
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

} // namespace
