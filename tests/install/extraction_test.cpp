// Tests the extraction of archives: what it writes, what it refuses, and that it never writes outside the staging
// directory.

#include <gtest/gtest.h>
#include <miniz.h>

#include "install/archive_plan.h"
#include "install/install_world.h"
#include "install/package_extraction.h"
#include "support/platform.h"

namespace fs = std::filesystem;

namespace {

// Extracts into <folder>/deep/in/staging.
ExtractionOutcome extract(const std::string& archive, const TemporaryFolder& folder) {
    fs::remove_all(folder / "deep/in/staging");
    fs::create_directories(folder / "deep/in/staging");
    return extractArchive(folder.write("archive", archive).string(), (folder / "deep/in/staging").string(), {});
}

// Extracts an archive of three entries; the second entry has the given name. Expects that the extraction stops at the
// second entry, or that this entry becomes `second`. If `isForWindows` is false, Windows cannot store the name. Then
// the extraction may fail on Windows, but it must not write outside the staging directory.
void expectEntry(const std::string& name, bool accepted, const Tree& second, bool isForWindows = true) {
    SCOPED_TRACE(name);
    const TemporaryFolder folder;
    const ExtractionOutcome outcome = extract(makeZip({{"first", "1"}, {name, "2"}, {"last", "3"}}), folder);
    const Tree tree = treeOf(folder / "deep/in/staging");
    EXPECT_EQ(treeOf(folder.path()).size(), tree.size() + 4) << "a file outside staging";
    std::error_code error;
    fs::remove_all(folder / "deep", error);
    EXPECT_FALSE(error) << error.message();
    if (kOnWindows && !isForWindows) return;
    Tree want{{"first", "1"}};
    if (accepted) want["last"] = "3";
    want.insert(second.begin(), second.end());
    EXPECT_EQ(outcome, accepted ? ExtractionOutcome::Done : ExtractionOutcome::Failed);
    EXPECT_EQ(tree, want);
}

} // namespace

TEST(PackageExtraction, RefusesEveryNameThatCouldLeaveTheDirectory) {
    for (const char* name : {"/etc/x", "\\x", "..", "../x", "..\\x", "a/../x", "a\\..\\x", "a/..", "a\\..", "a/..\\x",
                             "C:x", "a/b:c", ":", "a//../x", "..\\"})
        expectEntry(name, false, {});
    expectEntry(std::string("a\0b", 3), false, {});
    for (const char* directory : {"/", "/a/", "a/../"}) {
        EXPECT_FALSE(isSafeEntryName(directory)) << directory;
        expectEntry(directory, true, {}); // skipped
    }
}

TEST(PackageExtraction, KeepsOddNamesThatStayInside) {
    expectEntry("..x", true, {{"..x", "2"}});
    expectEntry("a/..b/c", true, {{"a", "<directory>"}, {"a/..b", "<directory>"}, {"a/..b/c", "2"}});
    expectEntry("a//./b", true, {{"a", "<directory>"}, {"a/b", "2"}});
    expectEntry("é/日本", true, {{"é", "<directory>"}, {"é/日本", "2"}});
    for (const std::string name : {"\xFF\xFE", "dot.", "blank ", "NUL", "nul.txt", "CONOUT$", "AUX", "COM1", "com9.x"})
        expectEntry(name, true, {{name, "2"}}, false);
    expectEntry("a/.. /x", true, {{"a", "<directory>"}, {"a/.. ", "<directory>"}, {"a/.. /x", "2"}}, false);
    expectEntry("empty directory/", true, {});
    expectEntry("", true, {});
    if (kOnWindows) return;
    std::string longest; // the longest name that fits into the zip library's buffer
    while (longest.size() < 511 - 100)
        longest += std::string(99, 'n') + '/';
    longest += std::string(511 - longest.size(), 'n');
    EXPECT_EQ(extract(makeZip({{longest, "x"}}), TemporaryFolder()), ExtractionOutcome::Done);
    EXPECT_EQ(extract(makeZip({{longest + "n", "x"}}), TemporaryFolder()), ExtractionOutcome::Failed);
    expectEntry("a\\b", true, {{"a\\b", "2"}});
    expectEntry("a\\", true, {{"a\\", "2"}}); // on Linux this is the name of a file, not of a directory
}

TEST(PackageExtraction, ReadsEntriesOfEverySizeAndNoDamagedOne) {
    std::string text;
    for (int i = 0; text.size() < 200000; ++i)
        text += std::to_string(i * i) + ' ';
    ZipEntry entry{"text", text, true};
    const TemporaryFolder folder;
    EXPECT_EQ(extract(makeZip({entry}), folder), ExtractionOutcome::Done);
    EXPECT_TRUE(readFileBytes(folder / "deep/in/staging/text") == text);
    entry.claimedCrc = 1;
    EXPECT_EQ(extract(makeZip({entry}), folder), ExtractionOutcome::Failed);
    entry = {"text", ""};
    entry.claimedCrc = 1;
    EXPECT_EQ(extract(makeZip({entry}), folder), ExtractionOutcome::Failed) << "data is missing";
    // The CRC is computed several bytes at a time, so test sizes with every remainder.
    for (std::size_t size = 0; size < 40; ++size)
        EXPECT_EQ(extract(makeZip({{"text", text.substr(0, size)}}), folder), ExtractionOutcome::Done);
}

// If two names can be the same path on some file system, the files are extracted in the order of the archive, so that
// the later file replaces the earlier one.
TEST(PackageExtraction, OnlyMeetingNamesNeedOrder) {
    const auto needsOrder = [](const std::string& first, const std::string& second) {
        const std::string bytes = makeZip({{first, "1"}, {"other", "x"}, {second, "2"}});
        mz_zip_archive archive{};
        EXPECT_TRUE(mz_zip_reader_init_mem(&archive, bytes.data(), bytes.size(), 0));
        const ArchivePlan plan = planArchive(archive, "staging");
        mz_zip_reader_end(&archive);
        return plan.needsOrder;
    };
    const std::pair<const char*, const char*> meeting[] = {
        {"a", "a"},   {"a/b", "A/B"}, {"a/b", "a//b"}, {"a/b", "./a/./b"}, {"a/b", "a\\b"},
        {"a", "a. "}, {"a", "a/b"},   {"a/b/c", "a"},  {"é", "É"},         {"Longer name.txt", "LONGER~1.TXT"},
    };
    for (const auto& [first, second] : meeting)
        EXPECT_TRUE(needsOrder(first, second)) << first << " and " << second;
    EXPECT_FALSE(needsOrder("a/b", "a/c"));
    EXPECT_FALSE(needsOrder("a", "ab/c"));

    std::vector<ZipEntry> entries;
    for (int i = 0; i < 200; ++i)
        entries.push_back({"same", std::string(i < 199 ? 100000 : 1, 'x')});
    const TemporaryFolder folder;
    EXPECT_EQ(extract(makeZip(entries), folder), ExtractionOutcome::Done);
    EXPECT_EQ(readFileBytes(folder / "deep/in/staging/same"), "x");
}

TEST(PackageExtraction, MixesNoForeignFileIntoTheEditor) {
    const TemporaryFolder folder;
    folder.write("staging/foreign", "could not be removed");
    const std::string archive = folder.write("archive", makeZip({{"editor.exe", "new"}})).string();
    EXPECT_EQ(extractArchive(archive, (folder / "staging").string(), {}), ExtractionOutcome::Failed);
    EXPECT_EQ(treeOf(folder / "staging").size(), 1u);
}
