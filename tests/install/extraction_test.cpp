// Archives: what is written, what is refused, and where nothing may ever be written.

#include <gtest/gtest.h>

#include "install/editor_location.h"
#include "install/install_world.h"
#include "install/package_extraction.h"
#include "support/platform.h"
#include "support/recording_system.h"

namespace fs = std::filesystem;

namespace {

ExtractionOutcome extract(const std::string& archive, const TemporaryFolder& folder) {
    const std::atomic<bool> cancel = false;
    fs::create_directories(folder / "deep/in/staging");
    return extractArchive(folder.write("archive", archive).string(), (folder / "deep/in/staging").string(), cancel);
}

// What an archive of one entry of this name comes to: the tree below staging, or "refused", or "fails".
Tree treeFromName(const std::string& name) {
    const TemporaryFolder folder;
    const ExtractionOutcome outcome = extract(makeZip({{"first", "1"}, {name, "2"}, {"last", "3"}}), folder);
    const Tree tree = treeOf(folder / "deep/in/staging");
    EXPECT_EQ(treeOf(folder.path()).size(), tree.size() + 4) << name << ": something lies outside staging";
    if (outcome == ExtractionOutcome::Failed) {
        EXPECT_EQ(tree, (Tree{{"first", "1"}})) << name;
        return {};
    }
    EXPECT_EQ(outcome, ExtractionOutcome::Done) << name;
    return tree;
}

} // namespace

TEST(PackageExtraction, RefusesEveryNameThatCouldLeaveTheDirectory) {
    const char* names[] = {
        "/etc/x",           "//x",      "\\x",         "\\\\server\\x", "..",        "../x",   "..\\x",
        "a/../x",           "a\\..\\x", "a/..",        "a\\..",         "a/../../x", "./../x", "a/..\\x",
        "a\\../x",          "C:\\x",    "C:x",         "c:/x",          "x:stream",  "a/b:c",  ":",
        "data/model:$DATA", "a//../x",  "a/./../../x", "..//x",         "/",         "/a/",    "a/../",
        "\\\\?\\C:\\x",     "..\\",
    };
    for (const std::string name : names) {
        EXPECT_FALSE(isSafeEntryName(name)) << name;
        // Directories are passed over, and write nothing.
        const Tree want = name.back() == '/' ? Tree{{"first", "1"}, {"last", "3"}} : Tree{};
        const Tree tree = treeFromName(name);
        // Windows has no such names: the package fails or the file gets another one, inside all the same.
        if (kOnWindows && (name.ends_with('.') || name.ends_with(' ') || name.starts_with('\xFF'))) continue;
        EXPECT_EQ(tree, want) << name;
    }
}

TEST(PackageExtraction, KeepsOddNamesThatStayInside) {
    const std::pair<std::string, Tree> cases[] = {
        {"..x", {{"..x", "2"}}},
        {"...", {{"...", "2"}}},
        {"a/..b/c..", {{"a", "<directory>"}, {"a/..b", "<directory>"}, {"a/..b/c..", "2"}}},
        {"./x", {{"x", "2"}}},
        {"a//./b", {{"a", "<directory>"}, {"a/b", "2"}}},
        {" ", {{" ", "2"}}},
        {"é/日本", {{"é", "<directory>"}, {"é/日本", "2"}}},
        {"\xFF\xFE", {{"\xFF\xFE", "2"}}},
        {"%2e%2e%2fx", {{"%2e%2e%2fx", "2"}}},
        {"empty directory/", {}},
        {"", {}},
#ifndef _WIN32
        {"a\\b", {{"a\\b", "2"}}},
        {"a\\", {{"a\\", "2"}}}, // a file, not a directory
#endif
    };
    for (const auto& [name, added] : cases) {
        Tree want{{"first", "1"}, {"last", "3"}};
        want.insert(added.begin(), added.end());
        const Tree tree = treeFromName(name);
        // Windows has no such names: the package fails or the file gets another one, inside all the same.
        if (kOnWindows && (name.ends_with('.') || name.ends_with(' ') || name.starts_with('\xFF'))) continue;
        EXPECT_EQ(tree, want) << name;
    }
}

TEST(PackageExtraction, ReadsEveryKindOfEntry) {
    std::string text;
    for (int i = 0; text.size() < 200000; ++i)
        text += std::to_string(i * i) + ' ';
    std::vector<ZipEntry> kinds;
    for (int bits = 0; bits < 8; ++bits) {
        ZipEntry entry{"kind" + std::to_string(bits), text, (bits & 1) != 0};
        entry.sizesBehindData = (bits & 2) != 0;
        entry.zip64 = (bits & 4) != 0;
        kinds.push_back(entry);
    }
    for (std::size_t size = 0; size < 70; ++size) // every length that the checksum's steps can leave over
        kinds.push_back({"size/" + std::to_string(size), text.substr(0, size), size % 2 == 0});
    const TemporaryFolder folder;
    ASSERT_EQ(extract(makeZip(kinds), folder), ExtractionOutcome::Done);
    const Tree tree = treeOf(folder / "deep/in/staging");
    for (const ZipEntry& entry : kinds)
        EXPECT_TRUE(tree.at(entry.name) == entry.data) << entry.name;
    EXPECT_EQ(extract(makeZip({}), TemporaryFolder()), ExtractionOutcome::Done);
}

TEST(PackageExtraction, NamesOfEveryScriptAndLengthArriveAndCanBeReplaced) {
    const TemporaryFolder folder;
    recordingSystem().launcherDirectory = (folder / "deep/in").string();
    const std::string part(60, 'p');
    const Tree files = {{"editor.exe", "1"},
                        {"blanks in it.bin", "2"},
                        {"über 文字 😀.dat", "3"},
                        {part + "-" + part + "-" + part + "-" + part, "4"}}; // past 260 on Windows
    std::vector<ZipEntry> entries;
    for (const auto& [name, data] : files)
        entries.push_back({name, data});
    for (int round = 0; round < 2; ++round) {
        ASSERT_EQ(extract(makeZip(entries), folder), ExtractionOutcome::Done);
        ASSERT_TRUE(swapIn((folder / "deep/in/staging").string()));
        EXPECT_EQ(treeOf(managedEditorDirectory()), files);
    }
}

TEST(PackageExtraction, ReadsArchivesOfOtherMakers) {
    if (kOnWindows) GTEST_SKIP() << "made by the tools of a POSIX system";
    const TemporaryFolder folder;
    const std::string script = R"(
import os, shutil, subprocess, zipfile
os.makedirs('t/dir')
open('t/dir/deflated.bin', 'wb').write(bytes(range(256)) * 700)
open('t/stored.bin', 'wb').write(os.urandom(1000))
open('t/\u00e9\u65e5.txt', 'w').write('text')
os.chdir('t')
class Pipe:  # cannot seek, so sizes stand behind the data
    def __init__(s, f): s.f = f
    def write(s, b): return s.f.write(b)
    def flush(s): s.f.flush()
def pack(out):
    with zipfile.ZipFile(out, 'w', zipfile.ZIP_DEFLATED) as z:
        z.write('dir')
        with z.open('dir/deflated.bin', 'w', force_zip64=True) as f: f.write(open('dir/deflated.bin', 'rb').read())
        z.write('stored.bin', compress_type=zipfile.ZIP_STORED)
        z.write('\u00e9\u65e5.txt')
pack('../python.zip')
with open('../piped.zip', 'wb') as f: pack(Pipe(f))
for tool in (['zip', '-qr', '../info.zip'], ['7z', 'a', '-tzip', '-bso0', '../seven.zip'], ['bsdtar', '-acf', '../bsd.zip']):
    if shutil.which(tool[0]): subprocess.run(tool + sorted(os.listdir()), check=True)
)";
    // The system's own where there is one: the first on the path may be another, without the system's modules.
    const std::string python = fs::exists("/usr/bin/python3") ? "/usr/bin/python3 " : "python3 ";
    const std::string command =
        "cd '" + folder.string() + "' && " + python + folder.write("script.py", script).string();
    ASSERT_EQ(std::system(command.c_str()), 0);
    for (const std::string name : {"python.zip", "piped.zip", "info.zip", "seven.zip", "bsd.zip"}) {
        const TemporaryFolder own;
        if (!fs::exists(folder / name)) {
            std::cout << "NOT TESTED, the tool is missing: " << name << '\n';
            continue;
        }
        EXPECT_EQ(extract(readFileBytes(folder / name), own), ExtractionOutcome::Done) << name;
        EXPECT_EQ(treeOf(own / "deep/in/staging"), treeOf(folder / "t")) << name;
    }
}
