#include "ui/ui_host.h"

#include <cstdlib>

#include <gtest/gtest.h>

#ifndef _WIN32
TEST(UiHost, WithoutADisplayItSaysWhyAndPrintsNothing) {
    setenv("DISPLAY", ":64001", 1);
    setenv("WAYLAND_DISPLAY", "no-such-compositor", 1);
    for (int i = 0; i < 2; ++i) {
        UiHost host;
        std::string errorText;
        testing::internal::CaptureStderr();
        EXPECT_FALSE(host.initialize({}, errorText));
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
        EXPECT_TRUE(errorText.starts_with("could not open the window: ") && errorText.size() > 30u) << errorText;
        EXPECT_EQ(host.integration, nullptr);
        EXPECT_EQ(host.dpiScale(), 1.0f);
    }
}
#endif
