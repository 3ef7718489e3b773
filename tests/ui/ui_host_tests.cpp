#include "ui/ui_host.h"

#include <cstdlib>

#include <gtest/gtest.h>

#ifndef _WIN32
TEST(UiHost, WithoutADisplayItSaysWhyAndPrintsNothing) {
    setenv("DISPLAY", ":64001", 1);
    setenv("WAYLAND_DISPLAY", "no-such-compositor", 1);
    for (int i = 0; i < 2; ++i) {
        UiHost host;
        UiHostDesc desc;
        desc.title = "VOLO Launcher";
        desc.width = 1180;
        desc.height = 740;
        std::string errorText;
        testing::internal::CaptureStderr();
        EXPECT_FALSE(host.initialize(desc, errorText));
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
        EXPECT_EQ(errorText.find("could not open the window: "), 0u) << errorText;
        EXPECT_GT(errorText.size(), 30u) << errorText;
        EXPECT_EQ(host.integration, nullptr);
        EXPECT_EQ(host.dpiScale(), 1.0f);
    }
}
#endif
