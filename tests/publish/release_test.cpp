#include "publish/release.h"

#include <cstddef>
#include <filesystem>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "publish_world.h"

namespace fs = std::filesystem;

TEST(Release, RefusesVersionsAndAddressesThatLaunchersMisread) {
    for (const std::string good : {"1", "1.4.2 beta 3", "v1+b/7", "!~", "YOUR_"})
        EXPECT_EQ(versionProblem(good), "") << good;
    EXPECT_EQ(versionProblem(std::string(128, '1')), "");
    for (const std::string& bad : {std::string(), std::string(129, '1'), std::string(" 1"), std::string("1 "),
                                   std::string("1  2"), std::string("1\t2"), std::string("1\x7F")})
        EXPECT_NE(versionProblem(bad), "") << bad;

    for (const std::string good : {"https://a", "https://a:8443/b%20c", "https://127.0.0.1:1"})
        EXPECT_EQ(baseUrlProblem(good), "") << good;
    for (const std::string bad :
         {"http://a", "https://a:0", "https://a/?b", "https://a/#b", "https://u@a", "https://a b", "https://a/\xC3\xA9",
          "https://YOUR_HOST/x", "https://a/platform=linux/x", "https://a/manifest.json"})
        EXPECT_NE(baseUrlProblem(bad), "") << bad;
}

TEST(Release, ARefusalOrAFailureChangesNothing) {
    static const std::string third = makeZip({{"editor.exe", "third"}});
    static const std::string hash = sha256Hex(third);
    const std::pair<const char*, void (*)(PublishWorld&)> cases[] = {
        {"other platform", [](PublishWorld& w) { w.request.platform = "windows"; }},
        {"old version, other bytes", [](PublishWorld& w) { w.request.version = "1.4.1"; }},
        {"version on offer without its statement",
         [](PublishWorld& w) {
             w.request.version = "1.4.2";
             fs::remove_all(w.folder / "site/statements");
         }},
        {"damaged manifest", [](PublishWorld& w) { w.folder.write("site/manifest.json", "[]"); }},
        {"a folder in the place of the package",
         [](PublishWorld& w) { w.folder.write("site/editor-1.4.3-" + hash.substr(0, 16) + ".zip/x", ""); }},
        {"a folder in the place of the statement",
         [](PublishWorld& w) { w.folder.write("site/statements/" + hash + ".txt/x", ""); }},
    };
    for (const auto& [what, spoil] : cases) {
        PublishWorld world;
        world.request.encrypt = false;
        world.request.version = "1.4.1";
        ASSERT_EQ(world.publish(), "");
        world.request.version = "1.4.2";
        ASSERT_EQ(world.publishBytes(makeZip({{"editor.exe", "second"}})), "");
        world.request.version = "1.4.3";
        spoil(world);
        const Tree before = treeOf(world.site);
        EXPECT_NE(world.publishBytes(third), "") << what;
        EXPECT_EQ(treeOf(world.site), before) << what;
    }
}

TEST(Release, APlainArchiveHasOneVersionOnly) {
    PublishWorld world;
    world.request.encrypt = false;
    ASSERT_EQ(world.publish(), "");
    const Tree before = treeOf(world.site);
    world.request.version = "2";
    EXPECT_NE(world.publish().find("as version 1.4.2"), std::string::npos);
    world.request.force = true;
    // Simulate another program that damages the package while it is being published.
    world.request.progress = [&](const char* step, std::uint64_t, std::uint64_t) {
        if (step != std::string("writing the package")) return;
        for (const auto& file : fs::directory_iterator(world.folder / "site"))
            if (file.path().extension() == ".tmp" && file.path().filename() != site::kLockName)
                fs::resize_file(file.path(), 0);
    };
    EXPECT_NE(world.publish().find("does not contain what was written"), std::string::npos);
    EXPECT_EQ(treeOf(world.site), before) << "the release on offer has lost its statement";
    world.request.progress = nullptr;
    EXPECT_EQ(world.publish(), "");
    EXPECT_EQ(world.verdict(world.manifest().sha256), "");
}

TEST(Release, PublishingAgainChangesOnlyTheStatement) {
    for (const bool encrypt : {true, false}) {
        PublishWorld world;
        world.request.encrypt = encrypt;
        world.request.baseUrl += "/"; // a slash at the end is ignored
        ASSERT_EQ(world.publish(), "");
        const Tree before = treeOf(world.site);
        EXPECT_EQ(before.size(), 4u) << "manifest, package, statement and its folder";
        world.request.nowSeconds += kDay;
        EXPECT_EQ(world.publish(), "");
        EXPECT_TRUE(world.result.packageKept);
        Tree after = treeOf(world.site);
        const std::string statement = "statements/" + world.manifest().sha256 + ".txt";
        EXPECT_NE(after[statement], before.at(statement));
        after[statement] = before.at(statement);
        EXPECT_EQ(after, before);

        // A damaged package is written again.
        const std::string oldKey = world.manifest().encryptionKey;
        world.folder.write(world.result.packagePath, "damaged");
        EXPECT_EQ(world.publish(), "");
        EXPECT_FALSE(world.result.packageKept);
        EXPECT_EQ(world.manifest().encryptionKey == oldKey, !encrypt) << "every package has a key of its own";
        if (encrypt) { // a package that the manifest's key does not open is written again too
            std::string manifest = readFileBytes(world.result.manifestPath);
            const std::size_t key = manifest.find("\"key\": \"") + 8;
            world.folder.write("site/manifest.json", manifest.replace(key, 4, "AAAA"));
            EXPECT_EQ(world.publish(), "");
            EXPECT_FALSE(world.result.packageKept);
        }
    }
}

TEST(Release, RefusesADirectoryThatAnotherRunChanges) {
    PublishWorld world;
    world.folder.write("site/manifest.json.killed.tmp", "left by a killed run");
    {
        FileLock other;
        ASSERT_EQ(other.tryToTake(joinPath(world.site, site::kLockName)), FileLock::Result::Taken);
        EXPECT_NE(world.publish().find("Another volo-publish"), std::string::npos);
    }
    EXPECT_EQ(world.publish(), "");
    EXPECT_EQ(treeOf(world.site).count("manifest.json.killed.tmp"), 0u);
}

TEST(Release, ProgressTellsBytesShareAndTimeLeft) {
    EXPECT_EQ(progressText("writing", 512 << 20, std::uint64_t{2048} << 20, 10.0),
              "writing: 512 of 2048 MiB, 25%, 30 s left");
    EXPECT_EQ(progressText("writing", 0, 0, 0.0), "writing: 0 of 0 MiB, 100%, 0 s left");
}
