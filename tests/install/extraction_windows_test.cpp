#include <chrono>
#include <thread>

#include <windows.h>
#include <gtest/gtest.h>

#include "install/install_world.h"
#include "support/eventually.h"

namespace fs = std::filesystem;

// The test holds a file of the editor open, as a virus scanner does.
TEST(WindowsExtraction, TheSwapWaitsForAnotherProgramThatHoldsAFile) {
    InstallWorld world(makeZip({{"editor.exe", "new"}}));
    world.installOldEditor();
    const HANDLE held =
        CreateFileW((world.editor / "data/model.bin").c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(held, INVALID_HANDLE_VALUE);
    world.state().startUpdate();
    ASSERT_TRUE(eventually([&] { return !fs::exists(world.editor / "editor.exe"); }));
    std::this_thread::sleep_for(std::chrono::milliseconds(300)); // at least one attempt fails
    CloseHandle(held);
    EXPECT_EQ(world.finish(), "Installed: Installed — version 2.0 [Installed]");
    EXPECT_EQ(treeOf(world.editor), withMarker({{"editor.exe", "new"}}, "2.0"));
}
