// Tests the transfer of a package: only a complete and verified file gets the final name.

#include <algorithm>
#include <atomic>
#include <chrono>
#include <fstream>

#include <gtest/gtest.h>

#include "crypto/sha256.h"
#include "install/install_world.h"
#include "support/eventually.h"

namespace fs = std::filesystem;

namespace {

const std::string kPackage = makeZip({{"editor.exe", std::string(300000, 'n')}, {"data/a", "b"}});
const std::string kChunked = "Transfer-Encoding: chunked\r\n";
constexpr std::chrono::seconds kShortestReadTimeout(30);

std::string ok(const std::string& fields, const std::string& body) {
    return "HTTP/1.1 200 OK\r\n" + fields + "\r\n" + body;
}

} // namespace

TEST(PackageDownload, CompletesWithEveryFramingOfTheBody) {
    char chunkSize[32];
    std::snprintf(chunkSize, sizeof chunkSize, "%zx\r\n", kPackage.size());
    const auto size = static_cast<std::int64_t>(kPackage.size());
    const std::pair<std::string, std::int64_t> cases[] = {
        {httpAnswer(200, kPackage), size},
        {ok("", kPackage), 0},
        {ok(kChunked, chunkSize + kPackage + "\r\n0\r\n\r\n"), 0},
    };
    for (const auto& [bytes, announced] : cases) {
        InstallWorld world;
        EditorInstallState& state = world.state();
        world.release("1+x", kPackage);
        world.serve("/package", bytes);
        world.folder.write("downloads/zantor_editor_1_x.zip.part", "of an earlier run" + kPackage);
        state.requestCancel(); // no run is active: this must not cancel the next run
        EXPECT_EQ(world.run(), "Installed: Installed — version 1+x [Installed]");
        const DownloadRecord row = state.downloadsSnapshot().at(0);
        EXPECT_EQ(row.totalBytes, announced);
        EXPECT_EQ(row.totalBytes, state.totalBytes());
        EXPECT_EQ(row.downloadedBytes, state.downloadedBytes());
        EXPECT_TRUE(announced == 0 || row.downloadedBytes == size);
        EXPECT_EQ(treeOf(world.downloads), (Tree{{"zantor_editor_1_x.zip", kPackage}}));
        for (const int index : {1, -1, 0}) // rows 1 and -1 do not exist; row 0 is removed together with its file
            state.removeDownload(index);
        EXPECT_EQ(treeOf(world.downloads), Tree{});
        EXPECT_EQ(world.run(), "Installed: Installed — version 1+x []");
        EXPECT_EQ(state.totalBytes(), 0) << "counters of the earlier run";
    }
}

TEST(PackageDownload, ReusesAPackageOnlyWhenItsChecksumMatches) {
    const std::string other = makeZip({{"editor.exe", "other"}});
    const struct {
        std::string present, extraMembers, outcome, editor;
    } cases[] = {
        {kPackage, "", "Installed: Installed — version 2.0 []", std::string(300000, 'n')},
        {other, "", "Installed: Installed — version 2.0 [Installed]", std::string(300000, 'n')},
        {other, R"("sha256":"",)", "Installed: Installed — version 2.0 []", "other"}, // no checksum: not verified
        {kPackage, R"("sha256":"ABCDEF",)", "Failed: The downloaded package failed its checksum verification. [Failed]",
         ""}, // an upper-case checksum never matches
    };
    for (const auto& c : cases) {
        InstallWorld world;
        world.release("2.0", kPackage, c.extraMembers);
        world.folder.write("downloads/zantor_editor_2.0.zip", c.present);
        EXPECT_EQ(world.run(), c.outcome);
        EXPECT_EQ(readFileBytes(world.editor / "editor.exe"), c.editor);
        EXPECT_EQ(fs::exists(world.downloads / "zantor_editor_2.0.zip"), !c.editor.empty());
    }
}

TEST(PackageDownload, AnUnusableDownloadsDirectoryLeavesTheRowDownloading) {
    for (const bool atTheEnd : {false, true}) {
        InstallWorld world(kPackage);
        // A directory that is not empty has the name of the file, so the file cannot be created.
        world.folder.write(std::string("downloads/zantor_editor_2.0.zip") + (atTheEnd ? "" : ".part") + "/occupied",
                           "x");
        EXPECT_EQ(world.run(), atTheEnd ? "Failed: Could not finalize the downloaded package. [Downloading]"
                                        : "Failed: Could not write to the downloads directory. [Downloading]");
        EXPECT_EQ(fs::is_regular_file(world.downloads / "zantor_editor_2.0.zip.part"), atTheEnd);
        EXPECT_EQ(world.requestCount(), atTheEnd ? 2u : 1u);
    }
}

TEST(PackageDownload, CancelEndsATransferThatDripsOrIsSilent) {
    for (const std::string& fields : {std::string("Content-Length: 1000000\r\n"), std::string(), kChunked}) {
        const bool counts = fields.starts_with("Content-Length");
        const bool drips = fields != kChunked; // the chunked body never begins
        std::atomic<int> written = 0;          // declared before `world`, because it must outlive the server in it
        InstallWorld world(kPackage);
        world.installOldEditor();
        world.serve("/package", [&](TlsConnection& connection) {
            connection.write(ok(fields, ""));
            while (drips && connection.write("x") && connection.pause(50))
                ++written;
            connection.stall();
        });
        EditorInstallState& state = world.state();
        const auto start = std::chrono::steady_clock::now();
        state.startUpdate();
        ASSERT_TRUE(eventually([&] {
            return drips ? written >= 3 && (!counts || state.downloadedBytes() > 0) : world.requestCount() == 2;
        }));
        EXPECT_EQ(state.statusMessage(), "Downloading editor 2.0…");
        EXPECT_EQ(state.totalBytes(), counts ? 1000000 : 0);
        state.removeDownload(0);
        EXPECT_EQ(state.downloadsSnapshot().size(), 1u) << "a row that is downloading stays";
        state.requestCancel();
        EXPECT_EQ(world.finish(), "Failed: Download cancelled. [Failed]");
        world.expectOldEditor({}, false);
        EXPECT_LT(std::chrono::steady_clock::now() - start, kShortestReadTimeout);
        world.serve("/package", httpAnswer(200, kPackage));
        EXPECT_EQ(world.run(), "Installed: Installed — version 2.0 [Installed Installed]") << "a retry starts afresh";
    }
}

TEST(PackageDownload, ClosingDoesNotWaitForASilentServer) {
    for (const std::string& silent :
         {std::string("/package"), std::string("/manifest"), "/statements/" + sha256Hex(kPackage) + ".txt"}) {
        SCOPED_TRACE(silent);
        InstallWorld world(kPackage);
        std::atomic<bool> asked = false;
        world.serve(silent, [&](TlsConnection& connection) {
            asked = true;
            connection.stall();
        });
        const auto start = std::chrono::steady_clock::now();
        world.state({world.url("/statements"), toBase64(publisherKeys()[0].publicKey())}).startUpdate();
        ASSERT_TRUE(eventually([&] { return asked.load(); }));
        world.close();
        EXPECT_LT(std::chrono::steady_clock::now() - start, kShortestReadTimeout);
    }
}

// Closing the launcher stops the computation of the hash. This must not count as a wrong checksum, because a package
// with a wrong checksum is deleted.
TEST(PackageDownload, ClosingDuringTheHashKeepsThePackage) {
    InstallWorld world(kPackage);
    const fs::path package = world.folder.write("downloads/zantor_editor_2.0.zip", "");
    fs::resize_file(package, std::uintmax_t{1} << 30);
    world.state().startUpdate();
    ASSERT_TRUE(eventually([&] { return world.requestCount() == 1; }));
    world.close();
    EXPECT_TRUE(fs::exists(package));
    EXPECT_EQ(world.requestCount(), 1u);
}

TEST(GrowingFileSha256, IsTheDigestOfTheWholeFile) {
    const TemporaryFolder folder;
    const std::string path = (folder / "growing").string();
    for (const std::size_t size : {0U, 1U, 262144U, 262145U, 1000000U}) {
        const std::string bytes(size, 'x');
        GrowingFileSha256 digest(path);
        {
            std::ofstream file(path, std::ios::binary);
            for (std::size_t at = 0; at < size; at += 100000) {
                file.write(bytes.data() + at, static_cast<std::streamsize>(std::min<std::size_t>(100000, size - at)));
                file.flush();
                digest.grewTo(std::min(at + 100000, size));
            }
        }
        EXPECT_EQ(digest.finish(), sha256Hex(bytes)) << size;
    }
    const std::atomic<bool> stop = true;
    GrowingFileSha256 stopped(path, &stop);
    EXPECT_EQ(stopped.finish(), "");
    const GrowingFileSha256 abandoned(path); // its destructor does not wait for the writer
}
