#include "ui/ui_pacing.h"

#include <array>
#include <set>

#include <gtest/gtest.h>

#include "support/ui_frames.h"

TEST(FramePacer, PresentsEveryChangeOnceAndThenWaits) {
    constexpr int kManyFrames = 100;
    FramePacer pacer;
    for (std::uint64_t fingerprint = 1; fingerprint <= 20; ++fingerprint) {
        EXPECT_TRUE(pacer.frameBuilt(fingerprint, false));
        EXPECT_FALSE(pacer.idle());
    }
    int settling = 0;
    for (; !pacer.idle() && settling < kManyFrames; ++settling)
        EXPECT_FALSE(pacer.frameBuilt(20, false)) << "the same frame again";
    EXPECT_GT(settling, 1) << "a popup needs some frames to find its size";
    EXPECT_LT(settling, kManyFrames);
    EXPECT_TRUE(pacer.frameBuilt(20, true)) << "new pixels under equal vertices";
    pacer.noteDamage();
    EXPECT_TRUE(pacer.frameBuilt(20, false));
    EXPECT_FALSE(pacer.frameBuilt(20, false)) << "damage is repaired once";
}

TEST(FramePacer, PresentsNothingWhileIconifiedAndRepaintsWhenRestored) {
    FramePacer pacer;
    EXPECT_TRUE(pacer.frameBuilt(1, false));
    pacer.setIconified(true);
    EXPECT_FALSE(pacer.frameBuilt(2, false));
    EXPECT_TRUE(pacer.idle()) << "frames come at the idle pace";
    pacer.setIconified(false);
    EXPECT_FALSE(pacer.idle());
    EXPECT_TRUE(pacer.frameBuilt(1, false)) << "the system has lost the image that was on screen";
    EXPECT_FALSE(pacer.frameBuilt(1, false));
}

TEST(FramePacer, NeverWaitsLongerThanOneFrameOfTheDisplay) {
    FramePacer pacer(0.01);
    pacer.frameStarted(5.0);
    EXPECT_NEAR(pacer.secondsUntilDue(5.004), 0.006, 1e-9);
    EXPECT_EQ(pacer.secondsUntilDue(5.2), 0.0);
    EXPECT_NEAR(pacer.secondsUntilDue(4.0), 0.01, 1e-9) << "the clock went back";
}

TEST(FrameFingerprint, ChangesWithEverythingThatAFrameShows) {
    UiFrames frames;
    std::array<float, 4> clear{};
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
    ImGui::GetIO().DisplaySize.x += 1.0f;
    seen.insert(fingerprint());
    ImGui::GetIO().DisplayFramebufferScale = {2.0f, 2.0f};
    seen.insert(fingerprint());
    EXPECT_EQ(seen.size(), 7u)
        << "clip, texture, colour, clear colour, window size or pixel density made no difference";
}

TEST(FrameFingerprint, TexturesThatWaitForTheRendererArePending) {
    UiFrames frames;
    const ImDrawData& frame = frames.build([](ImDrawList& list) { list.AddText({0, 0}, 0xFFFFFFFF, "text"); });
    EXPECT_TRUE(texturesPending(frame));
    UiFrames::takeTextures();
    EXPECT_FALSE(texturesPending(frame));
}
