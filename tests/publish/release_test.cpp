#include "publish/release.h"

#include <cstddef>
#include <filesystem>
#include <set>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "install/package_container.h"
#include "publish/container_writer.h"
#include "publish_world.h"

namespace fs = std::filesystem;

TEST(Release, SealsEveryPackageWithItsOwnNonce) {
    PublishWorld world;
    const std::string zip = (world.folder / "p").string(), sealed = zip + ".sealed", opened = zip + ".opened";
    const std::string key(32, 'k');
    WrittenPackage written;
    std::set<std::string> nonces;
    for (const std::size_t size : {0, 65536, 65537}) {
        const std::string bytes(size, 'p');
        world.folder.write("p", bytes);
        ASSERT_TRUE(sealPackage(zip, sealed, key, written, world.failure)) << size;
        nonces.insert(readFileBytes(sealed).substr(20, 12));
        EXPECT_TRUE(decryptPackage(sealed, opened, toBase64(key), world.failure)) << world.failure;
        EXPECT_EQ(readFileBytes(opened), bytes);
    }
    EXPECT_EQ(nonces.size(), 3u);
    fs::resize_file(zip, kMaxSealedBytes + 1); // a sparse file
    EXPECT_FALSE(sealPackage(zip, sealed, key, written, world.failure));
    EXPECT_NE(world.failure.find("too large"), std::string::npos);
}

TEST(Release, RefusesVersionsAndAddressesThatLaunchersMisread) {
    for (const std::string good : {"1", "1.4.2 beta 3", "v1+b/7", "!~", "YOUR_"})
        EXPECT_EQ(versionProblem(good), "") << good;
    for (const std::string bad : {"", " 1", "1 ", "1  2", "1\t2", "1\r", "1\x7F", "1\xC3\xA9"})
        EXPECT_NE(versionProblem(bad), "") << bad;
    for (const std::size_t length : {128, 129})
        EXPECT_EQ(versionProblem(std::string(length, '1')).empty(), length == 128);

    for (const std::string good : {"https://a", "https://a:8443/b%20c", "https://127.0.0.1:1"})
        EXPECT_EQ(baseUrlProblem(good), "") << good;
    for (const std::string bad :
         {"http://a", "https://a:0", "https://a/?b", "https://a/#b", "https://u@a", "https://a b", "https://a/\xC3\xA9",
          "https://YOUR_HOST/x", "https://a/platform=linux/x"})
        EXPECT_NE(baseUrlProblem(bad), "") << bad;
}

TEST(Release, ARefusalChangesNothing) {
    const std::pair<const char*, void (*)(PublishWorld&)> cases[] = {
        {"other platform", [](PublishWorld& w) { w.request.platform = "windows"; }},
        {"too many days", [](PublishWorld& w) { w.request.days = 93; }},
        {"old version, other bytes", [](PublishWorld& w) { w.request.version = "1.4.1"; }},
        {"version on offer without its statement",
         [](PublishWorld& w) {
             w.request.version = "1.4.2";
             fs::remove_all(w.folder / "site/statements");
         }},
        {"damaged manifest", [](PublishWorld& w) { w.folder.write("site/manifest.json", "[]"); }},
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

// A folder in the place of a file makes the step that writes the file fail.
TEST(Release, OffersTheOldReleaseWhenAStepFails) {
    const std::string next = makeZip({{"editor.exe", "next"}});
    const std::string hash = sha256Hex(next);
    for (const std::string& step :
         {"editor-2-" + hash.substr(0, 16) + ".zip", "statements/" + hash + ".txt", std::string("manifest.json.tmp")}) {
        PublishWorld world;
        world.request.encrypt = false;
        ASSERT_EQ(world.publish(), "");
        world.folder.write("site/" + step + "/obstacle", "");
        const auto before = world.files();
        world.request.version = "2";
        EXPECT_NE(world.publishBytes(next), "") << step;
        EXPECT_EQ(world.files(), before) << step;
        fs::remove_all(world.folder / "site" / step);
        EXPECT_EQ(world.publish(), "") << step;
        EXPECT_EQ(world.manifest().version, "2");
        EXPECT_EQ(world.verdict(hash), "");
    }
}

TEST(Release, APlainArchiveHasOneVersionOnly) {
    PublishWorld world;
    world.request.encrypt = false;
    ASSERT_EQ(world.publish(), "");
    world.request.version = "2";
    const auto before = world.files();
    EXPECT_NE(world.publish().find("as version 1.4.2"), std::string::npos);
    world.request.force = true;
    fs::create_directories(world.folder / "site/manifest.json.tmp/obstacle");
    EXPECT_NE(world.publish(), "");
    EXPECT_EQ(world.files(), before) << "the release on offer has lost its statement";
    fs::remove_all(world.folder / "site/manifest.json.tmp");
    EXPECT_EQ(world.publish(), "");
    EXPECT_EQ(world.verdict(world.manifest().sha256), "");
}

TEST(Release, PublishingAgainChangesOnlyTheStatement) {
    for (const bool encrypt : {true, false}) {
        PublishWorld world;
        world.request.encrypt = encrypt;
        world.request.baseUrl += "/"; // ignored
        ASSERT_EQ(world.publish(), "");
        const auto before = world.files();
        EXPECT_EQ(before.size(), 3u) << "another file was left behind";
        world.request.nowSeconds += kDay;
        EXPECT_EQ(world.publish(), "");
        EXPECT_TRUE(world.result.packageKept);
        auto after = world.files();
        const std::string statement = "statements/" + world.manifest().sha256 + ".txt";
        EXPECT_NE(after[statement], before.at(statement));
        after[statement] = before.at(statement);
        EXPECT_EQ(after, before);

        // A damaged package is written again.
        world.folder.write(world.result.packagePath, "damaged");
        EXPECT_EQ(world.publish(), "");
        EXPECT_FALSE(world.result.packageKept);
        if (encrypt) { // and so is one that the manifest's key does not open
            std::string manifest = readFileBytes(world.result.manifestPath);
            const std::size_t key = manifest.find("\"key\": \"") + 8;
            world.folder.write("site/manifest.json", manifest.replace(key, 4, "AAAA"));
            EXPECT_EQ(world.publish(), "");
            EXPECT_FALSE(world.result.packageKept);
        }
        // Rolling back to an older release: its bytes are known.
        world.request.version = "2";
        EXPECT_EQ(world.publishBytes(makeZip({{"editor.exe", "two"}})), "");
        world.request.version = "1.4.2";
        EXPECT_EQ(world.publishBytes(world.archive), "");
        EXPECT_EQ(world.verdict(world.manifest().sha256), "");
    }
}
