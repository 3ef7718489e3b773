// The transfer of a package: whatever the server does, only a complete and verified file gets the final name.

#include <chrono>
#include <random>

#include <gtest/gtest.h>

#include "install/install_world.h"
#include "support/eventually.h"

namespace fs = std::filesystem;

static const std::string kFailed = "The editor package download failed.";
static const std::string kPackage = makeZip({{"editor.exe", std::string(300000, 'n')}, {"data/a", "b"}});

static std::string head(const std::string& fields) {
    return "HTTP/1.1 200 OK\r\n" + fields + "\r\n";
}

TEST(PackageDownload, NoFaultOfTheServerLeavesAPackageOrTouchesTheEditor) {
    const std::string length = "Content-Length: " + std::to_string(kPackage.size()) + "\r\n";
    const std::string half = kPackage.substr(0, kPackage.size() / 2);
    const std::string checksum = "The downloaded package failed its checksum verification.";
    std::string altered = kPackage;
    altered[kPackage.size() / 2] ^= 1;
    const auto status = [](int code) { return [code](TlsConnection& c) { c.write(httpAnswer(code, kPackage)); }; };
    const struct {
        const char* what;
        InstallWorld::Answer answer;
        std::string message;
    } cases[] = {
        {"body shorter than announced", [=](TlsConnection& c) { c.write(head(length) + half); }, kFailed},
        {"cut without length", [=](TlsConnection& c) { c.write(head("") + half); }, checksum},
        {"chunk cut", [=](TlsConnection& c) { c.write(head("Transfer-Encoding: chunked\r\n") + "fffff\r\n" + half); },
         kFailed},
        {"reset", [=](TlsConnection& c) { c.write(head(length) + half), c.reset(); }, kFailed},
        {"no answer", [](TlsConnection& c) { c.closeAbruptly(); }, kFailed},
        {"altered", [=](TlsConnection& c) { c.write(httpAnswer(200, altered)); }, checksum},
        {"404 with the package", status(404), kFailed},
        {"206 with the package", status(206), kFailed},
        {"302 to the package",
         [=](TlsConnection& c) { c.write("HTTP/1.1 302 x\r\nLocation: /moved\r\n" + length + "\r\n" + kPackage); },
         kFailed},
    };
    for (const auto& c : cases) {
        InstallWorld world;
        world.installOldEditor();
        world.release("2.0", kPackage);
        world.serve("/package", c.answer);
        world.serve("/moved", kPackage);
        EXPECT_EQ(world.run(), failed(c.message, {DownloadStatus::Failed})) << c.what;
        EXPECT_EQ(treeOf(world.downloads), Tree{}) << c.what;
        EXPECT_TRUE(world.oldEditorIsUntouched()) << c.what;
        EXPECT_FALSE(fs::exists(world.staging)) << c.what;
        world.serve("/package", kPackage); // and the next run is none the worse for it
        EXPECT_EQ(world.run(), installed("2.0", 2)) << c.what;
    }
}

TEST(PackageDownload, AnExistingPackageIsReusedOnlyWhenItsChecksumMatches) {
    const std::string other = makeZip({{"editor.exe", "other"}});
    const struct {
        const char* what;
        std::string present, extraMembers;
        bool fetched;
        std::string message;
    } cases[] = {
        {"same", kPackage, "", false, "Installed — version 2"},
        {"another", other, "", true, "Installed — version 2"},
        {"any, without checksum", other, R"("sha256":"",)", false, "Installed — version 2"},
        {"upper case", kPackage, R"("sha256":"ABCDEF",)", true,
         "The downloaded package failed its checksum verification."},
    };
    for (const auto& c : cases) {
        InstallWorld world;
        world.release("2", kPackage, c.extraMembers);
        world.folder.write("downloads/zantor_editor_2.zip", c.present);
        const Outcome outcome = world.run();
        EXPECT_EQ(outcome.message, c.message) << c.what;
        EXPECT_EQ(outcome.rows.size(), c.fetched ? 1u : 0u) << c.what;
        EXPECT_EQ(world.requestedPaths().size(), c.fetched ? 2u : 1u) << c.what;
        if (outcome.status == EditorInstallStatus::Installed) {
            EXPECT_EQ(readFileBytes(world.editor / "editor.exe") == "other", c.present == other && !c.fetched)
                << c.what;
        }
    }
}

// Two failures say nothing about their row: it stays as it was, and cannot be deleted.
TEST(PackageDownload, TroubleWithTheDownloadsDirectoryLeavesTheRowDownloading) {
    for (const bool atTheEnd : {false, true}) {
        InstallWorld world;
        world.installOldEditor();
        world.release("2", kPackage);
        // Where the file should go there is a directory that cannot simply be deleted.
        world.folder.write(std::string("downloads/zantor_editor_2.zip") + (atTheEnd ? "" : ".part") + "/occupied", "x");
        EXPECT_EQ(world.run(), failed(atTheEnd ? "Could not finalize the downloaded package."
                                               : "Could not write to the downloads directory.",
                                      {DownloadStatus::Downloading}));
        EXPECT_EQ(fs::is_regular_file(world.downloads / "zantor_editor_2.zip.part"), atTheEnd);
        EXPECT_EQ(world.requestedPaths().size(), atTheEnd ? 2u : 1u);
        world.state().removeDownload(0);
        EXPECT_EQ(world.state().downloadsSnapshot().size(), 1u);
        EXPECT_TRUE(world.oldEditorIsUntouched());
    }
}

TEST(PackageDownload, CancelIsHeardWithinASecondWhileDataFlows) {
    InstallWorld world;
    world.installOldEditor();
    world.release("2", kPackage);
    world.serve("/package", [](TlsConnection& c) { // a drip, far slower than the read timeout would notice
        c.write(head("Content-Length: 1000000\r\n"));
        while (c.write("x") && c.pause(50)) {
        }
    });
    world.state().startUpdate();
    ASSERT_TRUE(eventually([&] { return world.state().downloadedBytes() >= 3; }));
    EXPECT_EQ(world.state().status(), EditorInstallStatus::Downloading);
    EXPECT_EQ(world.state().statusMessage(), "Downloading editor 2…");
    EXPECT_EQ(world.state().downloadsSnapshot().at(0).totalBytes, 1000000);
    world.state().removeDownload(0); // a running transfer stays
    const auto start = std::chrono::steady_clock::now();
    world.state().requestCancel();
    const Outcome outcome = world.finish();
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
    EXPECT_EQ(outcome, failed("Download cancelled.", {DownloadStatus::Failed}));
    EXPECT_EQ(treeOf(world.downloads), Tree{});
    EXPECT_TRUE(world.oldEditorIsUntouched());
}

// Whenever the cancel comes, the run ends in one of the told ways, the editor is a whole one, and the next run
// installs.
TEST(PackageDownload, ACancelAtAnyMomentLeavesAWholeEditorAndARunnableLauncher) {
    std::vector<ZipEntry> entries{{"editor.exe", "new"}};
    for (int i = 0; i < 200; ++i)
        entries.push_back({"data/" + std::to_string(i), std::string(20000, 'd')});
    const std::string package = makeZip(entries);
    std::mt19937 random(7);
    for (int round = 0; round < 50; ++round) {
        InstallWorld world;
        world.installOldEditor();
        world.release("2", package);
        world.state().startUpdate();
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 330000));
        world.state().requestCancel();
        const Outcome outcome = world.finish();
        if (outcome.status == EditorInstallStatus::Installed) {
            EXPECT_EQ(treeOf(world.editor).size(), 203u); // with "data" and the marker
        } else {
            const bool early = outcome.message == "Download cancelled.";
            EXPECT_EQ(outcome, failed(early ? "Download cancelled." : "Install cancelled.", {DownloadStatus::Failed}));
            EXPECT_TRUE(world.oldEditorIsUntouched());
        }
        EXPECT_FALSE(fs::exists(world.staging));
        const Outcome next = world.run();
        EXPECT_EQ(next, installed("2", next.rows.size())); // older rows of this version too
        EXPECT_EQ(treeOf(world.editor).size(), 203u);
    }
}
