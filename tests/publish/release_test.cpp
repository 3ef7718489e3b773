#include "publish/release.h"

#include <set>

#include <gtest/gtest.h>

#include "install/package_container.h"
#include "publish/container_writer.h"
#include "publish_world.h"

namespace fs = std::filesystem;

namespace {

std::string packageName(const PublishWorld& world) {
    return fs::path(world.result.packagePath).filename().string();
}

} // namespace

TEST(Release, LeavesWhatTheLauncherTakes) {
    for (const bool encrypt : {true, false}) {
        PublishWorld world;
        world.request.encrypt = encrypt;
        world.request.baseUrl += "/"; // one more slash changes nothing
        ASSERT_EQ(world.publish(), "");
        const UpdateManifest manifest = world.manifest();
        const std::string package = readFileBytes(world.result.packagePath);
        EXPECT_EQ(manifest.version, "1.4.2");
        EXPECT_EQ(manifest.url, "https://updates.example/linux/" + packageName(world));
        EXPECT_EQ(manifest.sha256, sha256Hex(package));
        EXPECT_EQ(packageName(world),
                  "editor-1.4.2-" + manifest.sha256.substr(0, 16) + (encrypt ? ".container" : ".zip"));
        EXPECT_EQ(parsePublisherKeys(world.result.authenticityKeys), world.publicKeys({"first"}));
        EXPECT_EQ(world.files().size(), 3u) << "something else was left behind";
        EXPECT_EQ(manifest.encryptionKey.empty(), !encrypt);
        const std::string opened = (world.folder / "opened").string();
        EXPECT_EQ(decryptPackage(world.result.packagePath, opened, manifest.encryptionKey, world.failure), encrypt);
        EXPECT_EQ(encrypt ? readFileBytes(opened) : package, world.archive);
        EXPECT_EQ(manifest.plaintextSha256, encrypt ? sha256Hex(world.archive) : "");
        EXPECT_EQ(world.verdict(manifest.sha256, {"first"}, kNow + 31 * kDay), "");
        EXPECT_NE(world.verdict(manifest.sha256, {"first"}, kNow + 32 * kDay), "");
    }
}

TEST(Release, SealsEveryReleaseWithAKeyAndANonceOfItsOwn) {
    PublishWorld world;
    const std::string zip = (world.folder / "p").string(), sealed = zip + ".sealed", opened = zip + ".opened";
    WrittenPackage written;
    std::set<std::string> keys, nonces;
    for (const std::size_t size : {0, 1, 65535, 65536, 65537, 200000}) {
        const std::string bytes(size, 'p');
        world.folder.write("p", bytes);
        ASSERT_TRUE(sealPackage(zip, sealed, written, world.failure)) << size;
        const std::string container = readFileBytes(sealed);
        keys.insert(written.keyText);
        nonces.insert(container.substr(20, 12));
        EXPECT_TRUE(decryptPackage(sealed, opened, written.keyText, world.failure)) << world.failure;
        EXPECT_EQ(readFileBytes(opened), bytes);
        EXPECT_EQ(written.size, size + 48);
        EXPECT_EQ(written.sha256 + written.plaintextSha256, sha256Hex(container) + sha256Hex(bytes));
    }
    EXPECT_EQ(keys.size() + nonces.size(), 12u);
    fs::resize_file(zip, kMaxSealedBytes + 1); // a hole
    EXPECT_FALSE(sealPackage(zip, sealed, written, world.failure));
    EXPECT_NE(world.failure.find("too large"), std::string::npos);
}

TEST(Release, RefusesVersionsAndAddressesThatLaunchersMisread) {
    for (const std::string good : {"1", "1.4.2", "1.4.2 beta 3", "v1+b/7", "!~", "YOUR_"})
        EXPECT_EQ(versionProblem(good), "") << good;
    for (const std::string bad : {"", " ", " 1", "1 ", "1  2", "1\t2", "1\n", "1\r", "1\x7F", "1\xC3\xA9", "1\x1F"})
        EXPECT_NE(versionProblem(bad), "") << bad;
    EXPECT_NE(versionProblem(std::string("1\0", 2)), "");
    for (const std::size_t length : {128, 129})
        EXPECT_EQ(versionProblem(std::string(length, '1')).empty(), length == 128);

    for (const std::string good : {"https://a", "https://a/b/c", "https://a:8443/b%20c", "https://127.0.0.1:1"})
        EXPECT_EQ(baseUrlProblem(good), "") << good;
    for (const std::string bad :
         {"", "http://a", "HTTPS://a", "https://", "https://:1", "https://a:0", "https://a:65536", "https://[::1]/",
          "https://a/?b", "https://a/#b", "https://u@a", "https://a b", "https://a\"b", "https://a/\xC3\xA9",
          "https://YOUR_HOST/x", "https://a/platform=linux/x", "https://a\n"})
        EXPECT_NE(baseUrlProblem(bad), "") << bad;
}

TEST(Release, TouchesNothingWhenItRefuses) {
    const std::pair<const char*, void (*)(PublishWorld&)> cases[] = {
        {"version", [](PublishWorld& w) { w.request.version = " 2"; }},
        {"other platform", [](PublishWorld& w) { w.request.platform = "windows"; }},
        {"too many days", [](PublishWorld& w) { w.request.days = 93; }},
        {"bad archive",
         [](PublishWorld& w) {
             w.folder.write("editor.zip", makeZip({{"../x", ""}}));
         }},
        {"same version, other bytes", [](PublishWorld& w) { w.request.version = "1.4.2"; }},
        {"old version, other bytes", [](PublishWorld& w) { w.request.version = "1.4.1"; }},
        {"only the manifest tells",
         [](PublishWorld& w) {
             w.request.version = "1.4.2";
             fs::remove_all(w.folder / "site/statements");
         }},
        {"no manifest", [](PublishWorld& w) { w.folder.write("site/manifest.json", "[]"); }},
    };
    for (const auto& [what, spoil] : cases) {
        PublishWorld world;
        world.request.version = "1.4.1";
        ASSERT_EQ(world.publish(), "");
        world.request.version = "1.4.2";
        ASSERT_EQ(world.publishBytes(makeZip({{"editor.exe", "second"}})), "");
        world.request.version = "1.4.3";
        world.folder.write("editor.zip", makeZip({{"editor.exe", "third"}}));
        spoil(world);
        const auto before = world.files();
        EXPECT_NE(world.publish(), "") << what;
        EXPECT_EQ(world.files(), before) << what;
    }
}

// The disk's refusals are played by folders that stand where a file is to be written.
TEST(Release, OffersTheOldReleaseWholeWhenAStepFails) {
    for (const std::string step : {"package.tmp", "editor-2-HASH.zip", "statements/SHA256.txt.tmp",
                                   "statements/SHA256.txt", "manifest.json.tmp"}) {
        PublishWorld world;
        world.request.encrypt = false;
        ASSERT_EQ(world.publish(), "");
        const std::string next = makeZip({{"editor.exe", "next"}});
        std::string obstacle = step;
        if (const auto at = obstacle.find("SHA256"); at != std::string::npos) obstacle.replace(at, 6, sha256Hex(next));
        if (const auto at = obstacle.find("HASH"); at != std::string::npos)
            obstacle.replace(at, 4, sha256Hex(next).substr(0, 16));
        world.folder.write("site/" + obstacle + "/in the way", "");
        const auto before = world.files();
        world.request.version = "2";
        EXPECT_NE(world.publishBytes(next), "") << step;
        EXPECT_EQ(world.files(), before) << step;
        fs::remove_all(world.folder / "site" / obstacle);
        EXPECT_EQ(world.publish(), "") << step;
        EXPECT_EQ(world.manifest().version, "2");
        EXPECT_EQ(world.verdict(world.manifest().sha256, {"first"}), "");
    }
}

TEST(Release, APlainArchiveIsOneVersionOnly) {
    PublishWorld world;
    world.request.encrypt = false;
    ASSERT_EQ(world.publish(), "");
    world.request.version = "2";
    const auto before = world.files();
    EXPECT_NE(world.publish().find("as version 1.4.2"), std::string::npos);
    world.request.force = true;
    fs::create_directories(world.folder / "site/manifest.json.tmp/in the way");
    EXPECT_NE(world.publish(), "");
    EXPECT_EQ(world.files(), before) << "the statement of what is offered still is gone";
    fs::remove_all(world.folder / "site/manifest.json.tmp");
    EXPECT_EQ(world.publish(), "");
    EXPECT_EQ(world.verdict(world.manifest().sha256, {"first"}), "");
}

TEST(Release, AgainChangesOnlyTheStatement) {
    for (const bool encrypt : {true, false}) {
        PublishWorld world;
        world.request.encrypt = encrypt;
        ASSERT_EQ(world.publish(), "");
        const auto before = world.files();
        world.request.nowSeconds += kDay;
        EXPECT_EQ(world.publish(), "");
        EXPECT_TRUE(world.result.packageKept);
        auto after = world.files();
        const std::string statement = "statements/" + world.manifest().sha256 + ".txt";
        EXPECT_NE(after[statement], before.at(statement));
        after[statement] = before.at(statement);
        EXPECT_EQ(after, before);

        // A package that has been damaged meanwhile is not kept.
        world.folder.write(fs::path("site") / packageName(world), "damaged");
        EXPECT_EQ(world.publish(), "");
        EXPECT_FALSE(world.result.packageKept);
        if (encrypt) { // nor one that the manifest's key does not open
            std::string manifest = readFileBytes(world.result.manifestPath);
            const std::size_t key = manifest.find("\"key\": \"") + 8;
            world.folder.write("site/manifest.json", manifest.replace(key, 4, "AAAA"));
            EXPECT_EQ(world.publish(), "");
            EXPECT_FALSE(world.result.packageKept);
        }
        EXPECT_EQ(sha256Hex(readFileBytes(world.result.packagePath)), world.manifest().sha256);

        // Back to an older release: its bytes are known.
        world.request.version = "2";
        EXPECT_EQ(world.publishBytes(makeZip({{"editor.exe", "two"}})), "");
        world.request.version = "1.4.2";
        EXPECT_EQ(world.publishBytes(world.archive), "");
        EXPECT_EQ(world.verdict(world.manifest().sha256, {"first"}), "");
    }
}
