// Names that mean something else to Windows than to the archive.

#include <gtest/gtest.h>

#include "install/editor_location.h"
#include "install/install_world.h"
#include "install/package_extraction.h"
#include "support/recording_system.h"

namespace fs = std::filesystem;

namespace {

// A launcher whose folder has blanks and letters outside ASCII.
struct Place {
    TemporaryFolder folder;
    fs::path launcher = folder / "Zo\xC3\xAB \xE6\x96\x87 files";

    Place() {
        fs::create_directories(launcher);
        recordingSystem().launcherDirectory = launcher.string();
    }
    ~Place() { recordingSystem().launcherDirectory.clear(); }

    ExtractionOutcome extract(const std::vector<ZipEntry>& entries) {
        const std::atomic<bool> cancel = false;
        fs::create_directories(launcher / "staging");
        return extractArchive(folder.write("archive", makeZip(entries)).string(), (launcher / "staging").string(),
                              cancel);
    }
};

} // namespace

TEST(WindowsExtraction, NamesOfEveryScriptAndLengthArriveAndCanBeReplaced) {
    const std::string part(60, 'p');
    const Tree files = {{"editor.exe", "1"},
                        {"a folder with blanks/b c.bin", "2"},
                        {"\xC3\xBC\x62\x65r/\xE6\x96\x87\xE5\xAD\x97 \xF0\x9F\x98\x80.dat", "3"},
                        {part + "/" + part + "/" + part + "/twenty chars long.bin", "4"},
                        {std::string(100, 'q') + "/" + std::string(250, 'r'), "5"}}; // past 260
    std::vector<ZipEntry> entries;
    for (const auto& [name, data] : files)
        entries.push_back({name, data});
    Place place;
    for (int round = 0; round < 2; ++round) {
        ASSERT_EQ(place.extract(entries), ExtractionOutcome::Done);
        ASSERT_TRUE(swapIn((place.launcher / "staging").string()));
        Tree installed = treeOf(managedEditorDirectory());
        std::erase_if(installed, [](const auto& entry) { return entry.second == "<directory>"; });
        EXPECT_EQ(installed, files);
    }
    EXPECT_EQ(fs::path(findManagedEditor()), place.launcher / "editor" / "editor.exe");
}

// What opens a device instead of a file: the package may fail, but it ends, writes nowhere else, and can be removed.
TEST(WindowsExtraction, DeviceNamesDoNoHarm) {
    for (const std::string name : {"NUL", "nul.txt", "CON", "con.log", "CONOUT$", "a/AUX", "PRN.bin", "COM1", "com9.x",
                                   "LPT1", "nul ", "a/.. /x"}) {
        Place place;
        const ExtractionOutcome outcome = place.extract({{"first", "1"}, {name, "2"}, {"last", "3"}});
        Tree tree = treeOf(place.launcher / "staging");
        EXPECT_EQ(tree["first"], "1") << name;
        EXPECT_EQ(tree["last"], outcome == ExtractionOutcome::Done ? "3" : "") << name;
        tree = treeOf(place.folder.path());
        std::erase_if(tree, [](const auto& entry) { return entry.first.find("/staging") != std::string::npos; });
        EXPECT_EQ(tree.size(), 2u) << name << ": the archive and the launcher's folder, and nothing else outside";
        std::error_code error;
        fs::remove_all(place.launcher, error);
        EXPECT_FALSE(error) << name << ": " << error.message();
        EXPECT_FALSE(fs::exists(place.launcher)) << name;
    }
}
