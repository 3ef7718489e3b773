// The install stage as a whole: what every way through it leaves on disk and in the rows.

#include <gtest/gtest.h>

#include "install/install_world.h"
#include "support/platform.h"

namespace fs = std::filesystem;

namespace {

const std::string kContentKey(32, 'k');
const std::string kArchive = makeZip({{"editor.exe", "new", true}, {"data/new.bin", "new data"}});
const Tree kNewEditor = {{"editor.exe", "new"}, {"data", "<directory>"}, {"data/new.bin", "new data"}};

Tree withMarker(Tree tree, const std::string& version) {
    tree[".zantor_editor_version"] = asTextFile(version + "\n");
    return tree;
}

std::string encryption(const std::string& key) {
    return "\"encryption\":{\"key\":\"" + toBase64(key) + "\"},";
}

} // namespace

TEST(InstallPipeline, EveryFailureLeavesExactlyWhatItShould) {
    const std::string sealed = sealContainer(kArchive, kContentKey);
    std::string tampered = sealed;
    tampered[sealed.size() - 20] ^= 1;
    const std::string decrypting = "Decrypting editor package failed: ";
    const std::string forged =
        decrypting + "Authentication tag verification failed: artifact has been tampered with or key is invalid.";
    const std::string noZip = "The editor package is not a readable zip archive.";
    const std::string unsafe = "Extracting the editor package failed.";
    const struct {
        const char* what;
        std::string package, extraMembers, message;
        bool decryptedStays = false, stagingStays = true;
    } cases[] = {
        {"no key", sealed, "", decrypting + "Invalid decryption key length."},
        {"wrong key", sealed, encryption(std::string(32, 'x')), forged, true},
        {"tampered", tampered, encryption(kContentKey), forged, true},
        {"container cut", sealed.substr(0, 60), encryption(kContentKey),
         decrypting + "Container file size does not match declared payload size."},
        {"plaintext differs", sealed, encryption(kContentKey) + R"("plaintext_sha256":"00",)",
         "The decrypted editor package failed plaintext checksum verification."},
        {"no archive", "nothing like a zip", "", noZip},
        {"no archive inside", sealContainer("nothing like a zip", kContentKey), encryption(kContentKey), noZip},
        {"magic cut", "ZANTOR1", "", noZip},
        {"unsafe name", makeZip({{"editor.exe", "new"}, {"../evil", "x"}}), "", unsafe, false, false},
    };
    for (const auto& c : cases) {
        InstallWorld world;
        world.installOldEditor();
        world.release("2.0", c.package, c.extraMembers);
        EXPECT_EQ(world.run(), failed(c.message, {DownloadStatus::Installing})) << c.what;
        EXPECT_TRUE(world.oldEditorIsUntouched()) << c.what;
        Tree downloads = treeOf(world.downloads);
        EXPECT_EQ(downloads.erase("zantor_editor_2.0.zip.decrypted.zip"), c.decryptedStays ? 1u : 0u) << c.what;
        EXPECT_EQ(downloads, (Tree{{"zantor_editor_2.0.zip", c.package}})) << c.what;
        EXPECT_EQ(fs::exists(world.staging), c.stagingStays) << c.what;
        EXPECT_TRUE(treeOf(world.staging).empty()) << c.what;

        // A retry reuses the package: the same failure, and no second row.
        EXPECT_EQ(world.run(), failed(c.message, {DownloadStatus::Installing})) << c.what;
        // A good package of the same version puts everything right, the stuck row included.
        world.release("2.0", kArchive);
        EXPECT_EQ(world.run(), installed("2.0", 2)) << c.what;
        EXPECT_EQ(treeOf(world.editor), withMarker(kNewEditor, "2.0")) << c.what;
        EXPECT_FALSE(fs::exists(world.staging)) << c.what;
    }
}

TEST(InstallPipeline, InstallsAlternatingVersionsTenTimesWithoutAResidue) {
    InstallWorld world;
    world.folder.write(world.staging / "left/over", "from a run that was killed");
    world.folder.write("downloads/zantor_editor_2.0.zip.part", "and from its transfer");
    const std::string sealed = sealContainer(kArchive, kContentKey);
    for (int round = 0; round < 10; ++round) {
        const bool plain = round % 2 == 0;
        const std::string version = plain ? "2.0" : "1.9/β";
        world.release(version, plain ? makeZip({{"bin/editor.exe", "plain"}}) : sealed,
                      plain ? "" : encryption(kContentKey) + R"("plaintext_sha256":")" + sha256Hex(kArchive) + "\",");
        EXPECT_EQ(world.run(), installed(version, round == 0 ? 1 : 2));
        const Tree want = plain ? Tree{{"bin", "<directory>"}, {"bin/editor.exe", "plain"}} : kNewEditor;
        EXPECT_EQ(treeOf(world.editor), withMarker(want, version));
        // Nothing beside the editor, and one package per version: three quarters of the runs did not download.
        EXPECT_EQ(std::distance(fs::directory_iterator(world.launcher), {}), 1);
        EXPECT_EQ(treeOf(world.downloads).size(), round == 0 ? 1u : 2u);
    }
}
