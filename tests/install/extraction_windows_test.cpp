#include <chrono>
#include <thread>

#include <windows.h>
#include <gtest/gtest.h>

#include "install/install_world.h"
#include "install/package_extraction.h"
#include "support/eventually.h"

namespace fs = std::filesystem;

// As a virus scanner does with a new file.
TEST(WindowsExtraction, TheSwapWaitsForAnotherProgramThatHoldsAFile) {
    InstallWorld world;
    world.installOldEditor();
    world.release("2.0", makeZip({{"editor.exe", "new"}}));
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

// Windows opens a device for such a name. The package may fail, but nothing is written elsewhere, and the directory can
// be removed.
TEST(WindowsExtraction, DeviceNamesDoNoHarm) {
    for (const std::string name : {"NUL", "nul.txt", "CON", "con.log", "CONOUT$", "a/AUX", "PRN.bin", "COM1", "com9.x",
                                   "LPT1", "nul ", "a/.. /x"}) {
        SCOPED_TRACE(name);
        const TemporaryFolder folder;
        const std::string archive = makeZip({{"first", "1"}, {name, "2"}, {"last", "3"}});
        fs::create_directories(folder / "staging");
        const ExtractionOutcome outcome =
            extractArchive(folder.write("archive", archive).string(), (folder / "staging").string(), {});
        EXPECT_EQ(readFileBytes(folder / "staging/first"), "1");
        EXPECT_EQ(readFileBytes(folder / "staging/last"), outcome == ExtractionOutcome::Done ? "3" : "");
        EXPECT_EQ(std::distance(fs::directory_iterator(folder.path()), {}), 2) << "a file outside staging";
        std::error_code error;
        fs::remove_all(folder / "staging", error);
        EXPECT_FALSE(error) << error.message();
        EXPECT_FALSE(fs::exists(folder / "staging"));
    }
}
