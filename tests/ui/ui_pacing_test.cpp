#include "ui/ui_pacing.h"

#include <array>
#include <functional>
#include <set>

#include <gtest/gtest.h>

#include "support/ui_frames.h"

namespace {

using Clear = std::array<float, 4>;
using Draw = std::function<void(ImDrawList&)>;

void drawStill(ImDrawList& list) {
    list.AddRectFilled({10, 10}, {50, 50}, 0xFFFFFFFF);
}

// What the host does with a pacer, with a display that shows whatever it is given.
struct PacedScreen {
    UiFrames frames;
    FramePacer pacer;
    int built = 0;
    int presented = 0;

    bool step(const Draw& draw) {
        const ImDrawData& frame = frames.build(draw);
        ++built;
        const bool show = pacer.frameBuilt(frameFingerprint(frame, Clear{}), texturesPending(frame));
        if (show) {
            UiFrames::takeTextures();
            ++presented;
        }
        return show;
    }
    int untilIdle(const Draw& draw) { // frames built before it waits
        const int before = built;
        while (!pacer.idle() && built < before + 100)
            step(draw);
        return built - before;
    }
};

void drawCircleAt(ImDrawList& list, int x) {
    list.AddCircleFilled({static_cast<float>(x), 20.0f}, 5.0f, 0xFFFFFFFF);
}

} // namespace

TEST(FramePacer, WhatMovesIsAlwaysShownAndAStillFrameOnce) {
    PacedScreen screen;
    for (int i = 0; i < 50; ++i) {
        EXPECT_TRUE(screen.step([i](ImDrawList& list) { drawCircleAt(list, i); }));
        EXPECT_FALSE(screen.pacer.idle());
    }
    screen.untilIdle(drawStill);
    EXPECT_EQ(screen.presented, 51);
    for (int i = 0; i < 50; ++i)
        EXPECT_FALSE(screen.step(drawStill));
    EXPECT_TRUE(screen.pacer.idle());
    screen.pacer.noteDamage();
    EXPECT_TRUE(screen.step(drawStill));
    EXPECT_FALSE(screen.step(drawStill)) << "damage is repaired once";
}

TEST(FramePacer, NewPixelsUnderEqualVerticesAreShown) {
    PacedScreen screen;
    ImTextureData picture;
    picture.Create(ImTextureFormat_RGBA32, 4, 4);
    picture.SetTexID(7);
    picture.SetStatus(ImTextureStatus_OK);
    ImVector<ImTextureData*> textures;
    textures.push_back(&picture);
    ImDrawData frame;
    frame.Textures = &textures;

    const auto show = [&] { return screen.pacer.frameBuilt(frameFingerprint(frame, Clear{}), texturesPending(frame)); };
    EXPECT_TRUE(show());
    EXPECT_FALSE(show());
    for (const ImTextureStatus status : {ImTextureStatus_WantUpdates, ImTextureStatus_WantCreate}) {
        picture.SetStatus(status);
        EXPECT_TRUE(show());
        picture.SetStatus(ImTextureStatus_OK);
        EXPECT_FALSE(show());
    }
}

TEST(FramePacer, AnIconifiedWindowBuildsAtTheBoundedWaitAndIsShownAgainWhenRestored) {
    PacedScreen screen;
    screen.untilIdle(drawStill);
    const int presented = screen.presented;
    screen.pacer.setIconified(true);
    for (int i = 0; i < 20; ++i) {
        EXPECT_TRUE(screen.pacer.idle());
        EXPECT_FALSE(screen.step([i](ImDrawList& list) { drawCircleAt(list, i); }));
        screen.pacer.noteEvent();
    }
    screen.pacer.setIconified(false);
    EXPECT_FALSE(screen.pacer.idle());
    EXPECT_TRUE(screen.step(drawStill)) << "the same picture as before, but the system no longer has it";
    EXPECT_FALSE(screen.step(drawStill));
    EXPECT_EQ(screen.presented, presented + 1);
}

TEST(FramePacer, FramesAreDueAtTheDisplaysRateWhateverTheEventsDo) {
    FramePacer pacer(0.01);
    pacer.frameStarted(5.0);
    EXPECT_NEAR(pacer.secondsUntilDue(5.004), 0.006, 1e-9);
    EXPECT_EQ(pacer.secondsUntilDue(5.2), 0.0);
    EXPECT_NEAR(pacer.secondsUntilDue(4.0), 0.01, 1e-9) << "a clock that went back must not stop the window";
}

TEST(FrameFingerprint, TellsFramesApartThatDifferInOneThing) {
    UiFrames frames;
    Clear clear{0.1f, 0.1f, 0.1f, 1.0f};
    const auto fingerprint = [&](float clip = 100, ImTextureID texture = 3, ImU32 colour = 0xFFFFFFFF) {
        const ImDrawData& frame = frames.build([&](ImDrawList& list) {
            list.PushClipRect({0, 0}, {100, clip});
            list.AddImage(ImTextureRef(texture), {0, 0}, {20, 20}, {0, 0}, {1, 1}, colour);
            list.PopClipRect();
        });
        return frameFingerprint(frame, clear);
    };
    const std::uint64_t original = fingerprint();
    EXPECT_EQ(fingerprint(), original);
    std::set<std::uint64_t> seen{original, fingerprint(101), fingerprint(100, 4), fingerprint(100, 3, 0xFEFFFFFF)};
    clear[2] = 0.2f;
    seen.insert(fingerprint());
    clear[2] = 0.1f;
    ImGui::GetIO().DisplaySize.x += 1.0f;
    seen.insert(fingerprint());
    ImGui::GetIO().DisplaySize.x -= 1.0f;
    ImGui::GetIO().DisplayFramebufferScale = {2.0f, 2.0f};
    seen.insert(fingerprint());
    EXPECT_EQ(seen.size(), 7u)
        << "clip, texture, colour, clear colour, window size or pixel density made no difference";
}
