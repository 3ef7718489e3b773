#include "ui/ui_placement.h"

#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "support/temporary_folder.h"

namespace fs = std::filesystem;

TEST(Placement, ComesBackAsItWasWritten) {
    const TemporaryFolder folder;
    const fs::path file = folder / "Läuncher.window";
    EXPECT_FALSE(readPlacement(file)) << "no file";
    for (const WindowPlacement& placement :
         {WindowPlacement{-1920, 40, 1180, 740, false, 150}, {0, 0, 900, 560, true}}) {
        ASSERT_TRUE(writePlacement(file, placement));
        EXPECT_EQ(readPlacement(file), placement);
    }
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.path()), {}), 1) << "a temporary file was left";
    EXPECT_FALSE(readPlacement(folder.path())) << "a folder";
}

TEST(Placement, AnInvalidFileIsIgnored) {
    EXPECT_EQ(parsePlacement("1 2 3 400 500 0\n"), (WindowPlacement{2, 3, 400, 500})) << "of an older version";
    for (const char* text :
         {"", "1 2 3 4 5", "1 2 3 400 500 0", "1 2 3 400 500 0 7\n", "1  2 3 400 500 0\n", "1 2 3 400.5 500 0\n",
          "1 2 3 0 500 0\n", "1 2 3 400 500 2\n", "1 100001 3 400 500 0\n", "1 -100001 3 400 500 0\n",
          "1 2 3 99999999999 500 0\n", "2 2 3 400 500 0 95\n", "3 2 3 400 500 0 100\n"})
        EXPECT_FALSE(parsePlacement(text)) << text;
}

TEST(FitPlacement, TheWholeWindowIsOnAMonitor) {
    const ScreenArea left{0, 0, 1920, 1080};
    const ScreenArea right{1920, 200, 1280, 800};
    const ScreenArea minimum{0, 0, 900, 560};
    const struct {
        const char* what;
        std::vector<ScreenArea> areas;
        WindowPlacement wanted;
        WindowPlacement fitted;
    } cases[] = {
        {"fits", {left}, {100, 50, 1180, 740, true}, {100, 50, 1180, 740, true}},
        {"first run", {left, right}, {-99999, -99999, 1180, 740}, {370, 170, 1180, 740}},
        {"its monitor is gone", {left}, {2000, 300, 1180, 740}, {370, 170, 1180, 740}},
        {"half over the edge", {left}, {1500, 900, 1180, 740}, {740, 340, 1180, 740}},
        {"on the second monitor", {left, right}, {1900, 210, 1180, 740}, {1920, 210, 1180, 740}},
        {"larger than the monitor", {right}, {1920, 200, 3000, 2000}, {1920, 200, 1280, 800}},
        {"smaller than the minimum", {left}, {100, 50, 10, 10}, {100, 50, 900, 560}},
        {"monitor smaller than the minimum", {{0, 0, 640, 480}}, {0, 0, 1180, 740}, {0, 0, 640, 480}},
        {"no monitor is known", {}, {5, 6, 1180, 740}, {5, 6, 1180, 740}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(fitPlacement(c.wanted, c.areas, minimum), c.fitted) << c.what;
    EXPECT_EQ(insideFrame({100, 10, 1366, 728}, {8, 31, 7, 9}), (ScreenArea{108, 41, 1351, 688}));
}

TEST(Zoom, StepsAsFarAsTheMonitorHasRoom) {
    const ScreenArea minimum{0, 0, 900, 560};
    EXPECT_EQ(largestZoom({{ScreenArea{0, 0, 1920, 1080}}}, minimum), 192);
    EXPECT_EQ(largestZoom({{ScreenArea{0, 0, 800, 600}}}, minimum), 100);
    int zoom = 100;
    for (const auto& [steps, expected] : {std::pair{1, 110}, {1, 125}, {9, 175}, {-9, 80}}) {
        zoom = stepZoom(zoom, steps, 192);
        EXPECT_EQ(zoom, expected);
    }
}
