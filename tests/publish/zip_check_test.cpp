#include "publish/zip_check.h"

#include <gtest/gtest.h>

#include "install/editor_location.h"
#include "install/package_extraction.h"
#include "support/package_making.h"
#include "support/platform.h"
#include "support/temporary_folder.h"

namespace {

const ZipEntry kEditor{"editor.exe", "the editor"};

class ArchiveCheck : public testing::Test {
  protected:
    // The failure text, or empty.
    std::string check(const std::string& bytes, PackagePlatform platform = PackagePlatform::Linux) {
        std::string failure;
        summary = {};
        const bool good = checkArchive(folder.write("a.zip", bytes).string(), platform, summary, failure);
        EXPECT_EQ(good, failure.empty());
        return failure;
    }
    // Whether the launcher's own code unpacks a.zip and finds the editor in it.
    bool launcherInstalls() {
        const std::string staging = (folder / "staging").string();
        std::filesystem::remove_all(staging);
        return extractArchive((folder / "a.zip").string(), staging, false) == ExtractionOutcome::Done &&
               !findEditorExecutable(staging).empty();
    }

    TemporaryFolder folder;
    ArchiveSummary summary;
};

// An archive of one more entry whose central header has `bytes` at `offset`.
std::string patched(std::size_t offset, const std::string& bytes) {
    std::string archive = makeZip({kEditor, {"data", std::string(500, 'd'), true}});
    archive.replace(archive.rfind("PK\1\2") + offset, bytes.size(), bytes);
    return archive;
}

} // namespace

TEST_F(ArchiveCheck, RefusesWhatTheLauncherRefuses) {
    const auto beside = [](const std::string& name) { return makeZip({kEditor, {name, ""}}); };
    ZipEntry damaged{"data", std::string(1000, 'd'), true};
    damaged.claimedCrc = 7;
    std::vector<std::pair<std::string, std::string>> cases = {
        {"PK\3\4 and so on", "not a readable zip"},
        {makeZip({kEditor}).substr(0, 60), "not a readable zip"},
        {makeZip({}), "\"editor.exe\" at its root"},
        {beside(std::string(300, 'a') + "/" + std::string(211, 'b')), "512 bytes or more"},
        {beside(std::string(256, 'a')), "more than 255 bytes"},
        {makeZip({kEditor, {"./", ""}, {".", "x"}}), "names no file"},
        {makeZip({kEditor, {"a/.", "x"}}), "names no file"},
        {makeZip({kEditor, {"a", "x"}, {"a/b", "x"}}), "another entry makes a file"},
        {makeZip({kEditor, {"a/b", "x"}, {"a", "x"}}), "makes it a folder"},
        {makeZip({kEditor, damaged}), "damaged"},
        {patched(8, std::string("\1\0", 2)), "it is encrypted"},
        {patched(10, std::string("\x0C\0", 2)), "neither stored nor deflated"},
        {patched(24, std::string("\x0A\0\0\0", 4)), "damaged"},            // one byte more than there is
        {patched(38, std::string("\x10\0\0\0", 4)), "marked as a folder"}, // by its attributes
        {patched(42, std::string("\1\0\0\0", 4)), "damaged"},              // where nothing is
    };
    for (const std::string name : {kOnWindows ? "editor.ex" : "Editor.exe", "sub/editor.exe", "editor.exe/"})
        cases.emplace_back(makeZip({{name, ""}}), "\"editor.exe\" at its root");
    for (const std::string name : {"/x", "\\x", "C:x", "a/b:c", "..", "a/../b", "a\\..\\b", "a\\.."})
        cases.emplace_back(beside(name), "refuses its name");
    for (const auto& [bytes, failure] : cases) {
        EXPECT_NE(check(bytes).find(failure), std::string::npos) << failure << ", not: " << check(bytes);
        EXPECT_FALSE(launcherInstalls()) << "needlessly strict: " << failure;
    }
}

// These unpack without complaint, but not into what was packed.
TEST_F(ArchiveCheck, RefusesWhatWouldUnpackIntoSomethingElse) {
    ZipEntry big{"data", "d"};
    big.zip64 = true;
    std::string emptied = makeZip({kEditor, big}); // no compressed byte, and a size
    emptied[emptied.rfind("PK\1\2") + 46 + 4 + 4 + 8] = 0;
    const std::pair<std::string, std::string> cases[] = {
        {makeZip({kEditor, {"d/a", "x"}, {"d/./a", "y"}}), "another entry is the same file"},
        {makeZip({kEditor, {"d/a", "x"}, {"d//a", "y"}}), "another entry is the same file"},
        {makeZip({kEditor, unixEntry("link", "editor.exe", 0120777)}), "link"},
        {makeZip({kEditor, {"caf\xE9", "x"}}), "not UTF-8"},
        {emptied, "damaged"},
        {makeZip({kEditor, {"a", "x"}, {std::string("z\0z", 3), "x"}}), "zero byte"},
    };
    for (const auto& [bytes, failure] : cases)
        EXPECT_NE(check(bytes).find(failure), std::string::npos) << failure << ", not: " << check(bytes);
}

TEST_F(ArchiveCheck, KnowsWhatWindowsCannotHave) {
    for (const std::string name :
         {"a<b",         "a\"b",     "a|b",  "a?b",        "a*b",          "a\x1F",         "dot.",
          "blank ",      "d./a",     "con",  "CON.txt",    "d/nul",        "Com1",          "lpt9.log",
          "com\xC2\xB2", "con .txt", "a\\.", "EDITOR.EXE", "a/Editor.exe", "editor.exe\\x", "folder\\"}) {
        const std::string archive = makeZip({kEditor, {"A/EDITOR.exe", "x"}, {name, "x"}});
        EXPECT_EQ(check(archive), "") << name;
        EXPECT_NE(check(archive, PackagePlatform::Windows), "") << name;
    }
    for (const std::string name : {"context", "com", "comx", "nully", "a.b", "..a", "a\\b", "com10", "\xC3\xA9"})
        EXPECT_EQ(check(makeZip({kEditor, {name, "x"}}), PackagePlatform::Windows), "") << name;
    EXPECT_EQ(check(makeZip({{"Editor.EXE", "x"}}), PackagePlatform::Windows), "");
}

TEST_F(ArchiveCheck, TakesWhatTheLauncherTakes) {
    ZipEntry big{"sub/zip64", std::string(100000, 'z'), true};
    big.zip64 = true;
    ZipEntry streamed{"streamed", std::string(100000, 's'), true};
    streamed.sizesBehindData = true;
    const std::string longest = std::string(255, 'a') + "/" + std::string(255, 'b'); // 511 bytes
    const std::string packed = makeZip({kEditor,
                                        big,
                                        streamed,
                                        {"", "nameless"},
                                        {"empty", ""},
                                        {"folder/", ""},
                                        {longest, "x"},
                                        {"a/..b", "x"},
                                        {"./d//e", "x"},
                                        unixEntry("run", "x", 0100755)});
    EXPECT_EQ(check(packed), "");
    EXPECT_TRUE(launcherInstalls());
    EXPECT_EQ(summary.files, 8u);
    EXPECT_EQ(summary.unpackedBytes, 10 + 200000 + 4u);
    EXPECT_TRUE(summary.warnings.empty());

    // Found when a project is opened, but not by the search that decides about installing.
    for (const std::string place : {"bin/editor.exe", "editor/editor.exe"}) {
        EXPECT_EQ(check(makeZip({{place, "x"}})), "");
        ASSERT_EQ(summary.warnings.size(), 1u);
        EXPECT_NE(summary.warnings[0].find(place), std::string::npos);
    }
}

// Whatever one changed byte makes of an archive: what passes here, the launcher installs.
TEST_F(ArchiveCheck, NoArchivePassesThatTheLauncherWouldFailOn) {
    const std::string good = makeZip({kEditor, {"d/text", std::string(300, 't'), true}, {"d/more", "more"}});
    int passed = 0;
    for (std::size_t i = 0; i < good.size(); ++i) {
        for (const int change : {0x01, 0x80, 0x2F}) {
            std::string bytes = good;
            bytes[i] = static_cast<char>(bytes[i] ^ change);
            if (!check(bytes).empty()) continue;
            ++passed;
            EXPECT_TRUE(launcherInstalls()) << i << " ^ " << change;
        }
    }
    EXPECT_GT(passed, 0); // times, for one, do not matter
}
