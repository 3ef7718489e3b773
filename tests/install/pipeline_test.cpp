// Tests what each outcome of an install run (installed, failed, cancelled, closed) leaves on disk and in the rows of
// the Downloads screen, and that a run waits while another launcher installs.

#include <thread>

#include <gtest/gtest.h>

#include "install/install_world.h"
#include "support/eventually.h"
#include "system/file_lock.h"

namespace fs = std::filesystem;

namespace {

const std::string kContentKey(32, 'k');
// The path of the second file has more than 260 characters, a limit of older Windows functions.
const std::string kLongName = "data/über 文字 😀 " + std::string(200, 'n');
const std::string kArchive = makeZip({{"editor.exe", "new", true}, {kLongName, "new data"}});
const Tree kNewEditor = {{"editor.exe", "new"}, {"data", "<directory>"}, {kLongName, "new data"}};
const std::string kNoZip = "Failed: The editor package is not a readable zip archive. ";
const std::string kEncryption = "\"encryption\":{\"key\":\"" + toBase64(kContentKey) + "\"},";

std::string withFlippedBit(std::string bytes) {
    bytes[bytes.size() - 20] ^= 1;
    return bytes;
}

// Starts a run and waits for the first file of the new editor.
void startExtracting(InstallWorld& world) {
    world.state().startUpdate();
    while (world.state().status() <= EditorInstallStatus::Installing && !fs::exists(world.staging / "editor.exe"))
        std::this_thread::yield();
}

} // namespace

TEST(InstallPipeline, EveryFailureLeavesTheOldEditorAndARunnableLauncher) {
    const std::string sealed = sealContainer(kArchive, kContentKey);
    const std::string tampered = withFlippedBit(sealed);
    ZipEntry damaged{"data/new.bin", "new data"};
    damaged.claimedCrc = 1;
    const std::string half = kArchive.substr(0, kArchive.size() / 2);
    const std::string length = "Content-Length: " + std::to_string(kArchive.size()) + "\r\n\r\n";
    const std::string notReceived = "Failed: The editor package download failed. [Failed]";
    const std::string checksum = "Failed: The downloaded package failed its checksum verification. [Failed]";
    const std::string decrypting = "Failed: Decrypting editor package failed: ";
    const std::string extracting = "Failed: Extracting the editor package failed. [Installing]";
    const struct {
        const char* what;
        std::string package, extraMembers, outcome;
        std::string answer = {}; // to the request for the package; empty: the package
    } cases[] = {
        {"no key", sealed, "", decrypting + "Invalid decryption key length. [Installing]"},
        {"tampered", tampered, kEncryption,
         decrypting + "Authentication tag verification failed: artifact has been tampered with or key is invalid. "
                      "[Installing]"},
        {"other plaintext", sealed, kEncryption + R"("plaintext_sha256":"00",)",
         "Failed: The decrypted editor package failed plaintext checksum verification. [Installing]"},
        {"shorter than the magic", "ZANTOR1", "", kNoZip + "[Installing]"},
        {"damaged entry", makeZip({{"editor.exe", "new"}, damaged}), "", extracting},
        {"cut", kArchive, "", notReceived, "HTTP/1.1 200 OK\r\n" + length + half},
        {"cut without a length", kArchive, "", checksum, "HTTP/1.1 200 OK\r\n\r\n" + half},
        {"cut chunk", kArchive, "", notReceived, "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nfff\r\n" + half},
        {"altered", kArchive, "", checksum, httpAnswer(200, withFlippedBit(kArchive))},
        {"404", kArchive, "", notReceived, httpAnswer(404, kArchive)},
        {"206", kArchive, "", notReceived, httpAnswer(206, kArchive)},
        {"302", kArchive, "", notReceived, "HTTP/1.1 302 x\r\nLocation: /moved\r\n" + length + kArchive},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        InstallWorld world;
        world.installOldEditor();
        world.serve("/moved", httpAnswer(200, kArchive));
        world.release("2.0", c.package, c.extraMembers);
        const bool arrives = c.answer.empty();
        if (!arrives) world.serve("/package", c.answer);
        EXPECT_EQ(world.run(), c.outcome);
        const fs::path decrypted = world.downloads / "zantor_editor_2.0.zip.decrypted.zip";
        EXPECT_EQ(fs::remove(decrypted), c.package == tampered) << "stays after this failure alone";
        world.expectOldEditor(arrives ? Tree{{"zantor_editor_2.0.zip", c.package}} : Tree{},
                              arrives && c.outcome != extracting);
        world.release("2.0", kArchive);
        EXPECT_EQ(world.run(), "Installed: Installed — version 2.0 [Installed Installed]");
        EXPECT_EQ(treeOf(world.editor), withMarker(kNewEditor, "2.0"));
    }
}

TEST(InstallPipeline, AlternatingVersionsLeaveNoResidue) {
    InstallWorld world;
    world.folder.write(world.staging / "left/over", "of a run that was killed");
    for (const char* name :
         {"zantor_editor_2.0.zip.part", "zantor_editor_3.zip.part", "zantor_editor_3.zip.decrypted.zip"})
        world.folder.write(world.downloads / name, "of a run that was killed");
    world.folder.write("downloads/another.zip.part", "not ours");
    const std::string plaintextSha256 = R"("plaintext_sha256":")" + sha256Hex(kArchive) + "\",";
    const std::string container = sealContainer(kArchive, kContentKey); // sealed once: each call uses a new nonce
    for (int round = 0; round < 4; ++round) {
        const bool sealed = round % 2 == 1;
        const std::string version = sealed ? "1.9/β" : "2.0";
        world.release(version, sealed ? container : makeZip({}), sealed ? kEncryption + plaintextSha256 : "");
        EXPECT_EQ(world.run(), "Installed: Installed — version " + version +
                                   (round == 0 ? " [Installed]" : " [Installed Installed]"));
        EXPECT_EQ(treeOf(world.editor), withMarker(sealed ? kNewEditor : Tree{}, version));
        EXPECT_FALSE(fs::exists(world.staging));
        EXPECT_EQ(treeOf(world.downloads).size(), round == 0 ? 2u : 3u) << "one package per version, the foreign file";
    }
}

TEST(InstallPipeline, CancelBeforeAnEntryFailsEveryRowOfTheVersion) {
    std::vector<ZipEntry> entries{{"editor.exe", "new"}};
    for (int i = 0; i < 4000; ++i)
        entries.push_back({"data/" + std::to_string(i), "x"});
    InstallWorld world;
    world.release("1.9", kArchive);
    world.run(); // adds a row of another version
    fs::remove_all(world.editor);
    world.installOldEditor();
    world.release("2.0", "no archive");
    EXPECT_EQ(world.run(), kNoZip + "[Installing Installed]");
    world.release("2.0", makeZip(entries));
    startExtracting(world);
    world.state().requestCancel();
    EXPECT_EQ(world.finish(), "Failed: Install cancelled. [Failed Failed Installed]");
    world.expectOldEditor({{"zantor_editor_1.9.zip", kArchive}, {"zantor_editor_2.0.zip", makeZip(entries)}}, false);
    world.release("2.0", "no archive");
    EXPECT_EQ(world.run(), kNoZip + "[Installing Failed Failed Installed]");
}

TEST(InstallPipeline, ClosingInterruptsAnEntryAndKeepsTheOldEditor) {
    const std::string package = makeZip({{"editor.exe", std::string(100'000'000, 'n')}});
    InstallWorld world(package);
    world.installOldEditor();
    startExtracting(world);
    world.close();
    world.expectOldEditor({{"zantor_editor_2.0.zip", package}}, false);
}

// The test takes a lock, as another launcher does while it installs.
TEST(InstallLocks, ARunWaitsForAnotherLauncherAndThenLooksAgain) {
    for (const std::string name :
         {"downloads/zantor_editor.lock", "some/wo anders/Läuncher 日本/editor-staging.lock"}) {
        SCOPED_TRACE(name);
        InstallWorld world;
        world.release("1.0", kArchive);
        const std::string path = world.folder.write(name, "").string();
        auto lock = std::make_unique<FileLock>();
        ASSERT_EQ(lock->tryToTake(path), FileLock::Result::Taken);
        world.state().startUpdate();
        // A run creates this lock file after it has compared the versions.
        const fs::path ownLock = world.downloads / "zantor_editor.lock";
        ASSERT_TRUE(eventually([&] { return world.requestCount() == 1 && fs::exists(ownLock); }));
        EXPECT_EQ(world.state().statusMessage(), "Checking for updates…");
        world.installOldEditor(); // version 1.0, as if the other launcher had installed it
        lock.reset();
        EXPECT_EQ(world.finish(), "Installed: Installed — version 1.0 []");
        world.expectOldEditor({}, false);

        world.release("2.0", kArchive);
        lock = std::make_unique<FileLock>();
        ASSERT_EQ(lock->tryToTake(path), FileLock::Result::Taken);
        world.state().startUpdate();
        world.state().requestCancel();
        EXPECT_EQ(world.finish(), "Failed: Install cancelled. []");

        lock.reset();
        fs::remove(path);
        fs::create_directory(path); // no lock file can be made
        EXPECT_EQ(world.run(), "Installed: Installed — version 2.0 [Installed]");
        world.close();
    }
}
