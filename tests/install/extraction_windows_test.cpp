#include <gtest/gtest.h>

#include "install/install_world.h"
#include "install/package_extraction.h"

namespace fs = std::filesystem;

// Windows opens a device for such a name. The package may fail, but nothing is written elsewhere, and the directory can
// be removed.
TEST(WindowsExtraction, DeviceNamesDoNoHarm) {
    for (const std::string name : {"NUL", "nul.txt", "CON", "con.log", "CONOUT$", "a/AUX", "PRN.bin", "COM1", "com9.x",
                                   "LPT1", "nul ", "a/.. /x"}) {
        SCOPED_TRACE(name);
        const TemporaryFolder folder;
        const std::atomic<bool> cancel = false;
        const std::string archive = makeZip({{"first", "1"}, {name, "2"}, {"last", "3"}});
        fs::create_directories(folder / "staging");
        const ExtractionOutcome outcome =
            extractArchive(folder.write("archive", archive).string(), (folder / "staging").string(), cancel);
        EXPECT_EQ(readFileBytes(folder / "staging/first"), "1");
        EXPECT_EQ(readFileBytes(folder / "staging/last"), outcome == ExtractionOutcome::Done ? "3" : "");
        EXPECT_EQ(std::distance(fs::directory_iterator(folder.path()), {}), 2) << "a file outside staging";
        std::error_code error;
        fs::remove_all(folder / "staging", error);
        EXPECT_FALSE(error) << error.message();
        EXPECT_FALSE(fs::exists(folder / "staging"));
    }
}
