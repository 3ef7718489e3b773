#include "publish/zip_check.h"

#include <cstddef>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "install/package_extraction.h"
#include "support/package_making.h"
#include "support/platform.h"
#include "support/temporary_folder.h"

namespace {

const ZipEntry kEditor{"editor.exe", "the editor"};

class ArchiveCheck : public testing::Test {
  protected:
    // Checks an archive. Returns the failure text; empty if the archive is accepted.
    std::string check(const std::string& bytes, PackagePlatform platform = PackagePlatform::Linux) {
        std::string failure;
        summary = {};
        const bool good = checkArchive(folder.write("a.zip", bytes).string(), platform, summary, failure);
        EXPECT_EQ(good, failure.empty());
        return failure;
    }

    TemporaryFolder folder;
    ArchiveSummary summary;
};

// Returns an archive of two entries. The central directory header of the second entry has `bytes` at `offset`.
std::string patched(std::size_t offset, const std::string& bytes) {
    std::string archive = makeZip({kEditor, {"data", std::string(500, 'd'), true}});
    archive.replace(archive.rfind("PK\1\2") + offset, bytes.size(), bytes);
    return archive;
}

} // namespace

TEST_F(ArchiveCheck, RefusesWhatWouldFailOrUnpackIntoSomethingElse) {
    const auto with = [](const ZipEntry& entry) { return makeZip({kEditor, entry}); };
    ZipEntry damaged{"data", "d"};
    damaged.claimedCrc = 1;
    ZipEntry big{"data", "d"};
    big.zip64 = true;
    std::string emptied = with(big); // the next line sets only the compressed size to 0
    emptied[emptied.rfind("PK\1\2") + 46 + 4 + 4 + 8] = 0;
    const std::pair<std::string, std::string> cases[] = {
        {"PK\3\4 and so on", "not a readable zip"},
        {makeZip({{kOnWindows ? "editor.ex" : "Editor.exe", ""}}), "\"editor.exe\" at its root"},
        {makeZip({{"sub/editor.exe", ""}}), "\"editor.exe\" at its root"},
        {with({std::string(300, 'a') + "/" + std::string(211, 'b'), ""}), "512 bytes or more"},
        {with({std::string(256, 'a'), ""}), "more than 255 bytes"},
        {with({"a/.", ""}), "names no file"},
        {makeZip({kEditor, {"a", "x"}, {"a/b", "x"}}), "folder's name as a file"},
        {makeZip({kEditor, {"a/b", "x"}, {"a", "x"}}), "its name as a folder"},
        {makeZip({kEditor, {"d/a", "x"}, {"d/./a", "y"}}), "another entry is the same file"},
        {with(unixEntry("link", "editor.exe", 0120777)), "link"},
        {with({"caf\xE9", "x"}), "not UTF-8"},
        {with({std::string("z\0z", 3), "x"}), "zero byte"},
        {emptied, "damaged"},
        {with(damaged), "damaged"},
        {patched(8, std::string("\1\0", 2)), "it is encrypted"},
        {patched(10, std::string("\x0C\0", 2)), "neither stored nor deflated"},
        {patched(38, std::string("\x10\0\0\0", 4)), "marked as a folder"},
        {with({"/x", ""}), "refuses its name"},
    };
    for (const auto& [bytes, failure] : cases)
        EXPECT_NE(check(bytes).find(failure), std::string::npos) << failure << ", not: " << check(bytes);
}

TEST_F(ArchiveCheck, RefusesNamesThatWindowsCannotStore) {
    for (const std::string name :
         {"a<b", "a?b", "a\x1F", "dot.", "blank ", "d./a", "con", "CON.txt", "Com1", "lpt9.log", "com\xC2\xB2",
          "con .txt", "a\\.", "EDITOR.EXE", "editor.exe\\x", "folder\\"}) {
        const std::string archive = makeZip({kEditor, {name, "x"}});
        EXPECT_EQ(check(archive), "") << name;
        EXPECT_NE(check(archive, PackagePlatform::Windows), "") << name;
    }
    for (const std::string name : {"context", "com", "nully", "..a", "a\\b", "com10", "\xC3\xA9"})
        EXPECT_EQ(check(makeZip({kEditor, {name, "x"}}), PackagePlatform::Windows), "") << name;
    EXPECT_EQ(check(makeZip({{"Editor.EXE", "x"}}), PackagePlatform::Windows), "");
}

TEST_F(ArchiveCheck, AcceptsWhatTheLauncherInstalls) {
    ZipEntry big{"sub/zip64", std::string(100000, 'z'), true};
    big.zip64 = true;
    const std::string longest = std::string(255, 'a') + "/" + std::string(255, 'b'); // 511 bytes
    EXPECT_EQ(check(makeZip({kEditor, big, {"", "nameless"}, {"folder/", ""}, {longest, ""}, {"./d//e", ""}})), "");
    EXPECT_EQ(extractArchive((folder / "a.zip").string(), (folder / "staging").string(), {}), ExtractionOutcome::Done);
    EXPECT_EQ(summary.files, 4u);
    EXPECT_EQ(summary.unpackedBytes, 100010u);
    EXPECT_TRUE(summary.warnings.empty());

    EXPECT_EQ(check(makeZip({kEditor, unixEntry("open", "x", 0100666), unixEntry("closed", "x", 0100664)})), "");
    ASSERT_EQ(summary.warnings.size(), 1u);
    EXPECT_TRUE(summary.warnings[0].starts_with("1 entries are writable")) << summary.warnings[0];

    EXPECT_EQ(check(makeZip({{"bin/editor.exe", "x"}})), "");
    EXPECT_EQ(summary.warnings.size(), 1u) << "the launcher would install it again at every check";
}
