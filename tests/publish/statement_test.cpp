#include <cstddef>
#include <filesystem>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "publish/inspect.h"
#include "publish/statement_writer.h"
#include "publish_world.h"

namespace fs = std::filesystem;

namespace {

// Publishes three releases, 20 days apart. The manifest offers the last one.
class Statements : public testing::Test {
  protected:
    void SetUp() override {
        request.siteDirectory = world.site;
        request.days = 30;
        for (const std::string version : {"1", "2", "3"}) {
            world.request.version = version;
            world.request.nowSeconds = kNow + (version[0] - '1') * 20 * kDay;
            ASSERT_EQ(world.publishBytes(makeZip({{"editor.exe", version}})), "");
            hashes[version] = world.manifest().sha256;
        }
        request.nowSeconds = kNow + 40 * kDay; // the first statement has expired, the second expires in 10 days
    }

    // Runs renewStatements with `request`, and signs with the keys of these names. Returns the failure text; empty on
    // success.
    std::string run(const std::vector<std::string>& keyNames = {"first"}) {
        report = {};
        std::string failure;
        const bool done = renewStatements(request, world.keys(keyNames), report, failure);
        EXPECT_EQ(done, failure.empty());
        return failure;
    }
    std::string verdict(const std::string& version, const std::string& key = "first", int days = 0) {
        return world.verdict(hashes[version], key, request.nowSeconds + days * kDay);
    }

    PublishWorld world;
    StatementRequest request;
    StatementReport report;
    std::map<std::string, std::string> hashes;
};

const std::string kUnsigned = "the release is not signed by a trusted key.";
const std::string kWithdrawn = "this release was withdrawn by its publisher.";
const std::string kExpired = "the release statement has expired. Check this computer's date and time.";

} // namespace

TEST_F(Statements, AreRenewedUnlessTheyHaveExpired) {
    request.all = true;
    request.days = 92;
    EXPECT_EQ(run(), "");
    EXPECT_EQ(verdict("1"), kExpired);
    EXPECT_EQ(verdict("3", "first", 93), "");
    EXPECT_EQ(verdict("3", "first", 94), kExpired);
    request.all = false;
    request.versions = {"1"};
    request.days = 93; // launchers refuse lifetimes longer than 92 days
    EXPECT_NE(run(), "");
    request.days = 30;
    EXPECT_EQ(run(), "");
    EXPECT_EQ(verdict("1"), "");
}

// The first statement has expired and the second expires in 10 days. Neither calls for action, because the manifest
// offers the third release.
TEST_F(Statements, OfTheReleaseOnOfferCallForActionInTime) {
    EXPECT_EQ(run({}), "");
    EXPECT_FALSE(report.offerNeedsAction);
    for (const int days : {20, 31}) { // 10 days before the third statement expires, and after it has expired
        request.nowSeconds = kNow + (40 + days) * kDay;
        EXPECT_EQ(run({}), "");
        EXPECT_TRUE(report.offerNeedsAction) << days;
        EXPECT_NE(report.warnings.back().find("--offered"), std::string::npos) << report.warnings.back();
    }
    request.offered = true;
    EXPECT_EQ(run(), "");
    EXPECT_FALSE(report.offerNeedsAction);
    EXPECT_EQ(verdict("3"), "");
    EXPECT_EQ(verdict("2"), kExpired) << "an older release can be offered again";
    request.offered = false;
    fs::remove(world.result.statementPath);
    EXPECT_EQ(run({}), "");
    EXPECT_TRUE(report.offerNeedsAction) << "its statement is missing";
}

TEST_F(Statements, ChangeKeysByBeingSignedWithBoth) {
    request.all = true;
    EXPECT_EQ(run({"first", "second"}), "");
    EXPECT_EQ(verdict("3", "first") + verdict("3", "second"), "");
    EXPECT_EQ(run({"second"}), "");
    EXPECT_EQ(verdict("3", "first"), kUnsigned);
    EXPECT_EQ(verdict("3", "second"), "");
    EXPECT_NE(run({"first"}), "") << "the first key signed a statement of another key";
    request.trustedKeys = "not a key";
    EXPECT_NE(run({"second"}), "");
    request.trustedKeys = publisherKeysText({world.publicKey("second")});
    EXPECT_EQ(run({"first"}), "");
    EXPECT_EQ(verdict("3", "first"), "");
}

TEST_F(Statements, ThatOthersWroteAreNotSigned) {
    const std::string theirs = std::string(64, 'a');
    world.folder.write("site/statements/" + theirs + ".txt",
                       writeStatement({"3", 10, theirs, "-"}, "ok", kNow, 90, world.keys({"second"})));
    const auto before = treeOf(world.site);
    request.all = true;
    EXPECT_NE(run(), "");
    EXPECT_EQ(treeOf(world.site), before) << "some statements were signed";
    fs::remove(statementPath(world.site, theirs));
    world.folder.write(statementPath(world.site, hashes["2"]), readFileBytes(statementPath(world.site, hashes["3"])));
    EXPECT_NE(run().find("another package than its name"), std::string::npos);
}

TEST_F(Statements, WithdrawAReleaseForGood) {
    request.revoke = true;
    request.packages = {""}; // a prefix of every hash
    EXPECT_NE(run(), "");
    EXPECT_EQ(verdict("3"), "");
    request.versions = {"2"};
    request.packages = {hashes["3"].substr(0, 12)};
    EXPECT_EQ(run(), "");
    EXPECT_EQ(verdict("2"), kWithdrawn);
    EXPECT_EQ(verdict("3"), kWithdrawn);
    EXPECT_TRUE(report.offerNeedsAction);
    // Neither renewing the statements nor publishing again without `force` offers the withdrawn release again.
    request.revoke = false;
    EXPECT_NE(run(), "");
    request.versions.clear();
    request.packages.clear();
    request.all = true;
    EXPECT_EQ(run(), "");
    EXPECT_NE(world.publish().find("withdrawn"), std::string::npos);
    EXPECT_EQ(verdict("3"), kWithdrawn);
    world.request.force = true;
    EXPECT_EQ(world.publish(), "");
    EXPECT_EQ(verdict("3"), "");
}

TEST_F(Statements, AreNotSignedWithAKeyInThePublishedDirectory) {
    for (const auto& [name, good] : {std::pair("site/inside", false), std::pair("site", true)}) {
        EXPECT_EQ(run({name}).empty(), good) << name;
        std::string failure;
        EXPECT_EQ(publishRelease(world.request, world.keys({name}), world.result, failure), good) << name;
    }
}

TEST_F(Statements, AreInspectedTogetherWithTheirPackages) {
    const auto inspect = [&](const std::string& path, const std::string& manifest = {}) {
        std::string failure;
        const std::string keys = publisherKeysText({world.publicKey("first")});
        const bool holds = inspectFile({path, manifest, keys, request.nowSeconds}, report, failure);
        EXPECT_EQ(holds, failure.empty());
        return failure;
    };
    const std::string package = world.result.packagePath;
    const std::string manifest = world.result.manifestPath;
    const std::string statement = world.result.statementPath;
    for (const std::string& path : {package, manifest, statement, world.request.zipPath})
        EXPECT_EQ(inspect(path), "") << path;
    const struct {
        std::string file, after, bytes, inspected, words;
    } forgeries[] = {
        {package, "ZANTOR1", "forged", manifest, "does not match sha256"},
        {manifest, "plaintext_sha256\": \"", "0000", package, "do not match plaintext_sha256"},
        {manifest, "\"key\": \"", "AAAA", package, "tampered"},
        {statement, "version: ", "4", statement, kUnsigned},
        {statement, "version: ", "4", package, kUnsigned},
    };
    for (const auto& [file, after, bytes, inspected, words] : forgeries) {
        const std::string good = readFileBytes(file);
        std::string forged = good;
        world.folder.write(file, forged.replace(good.find(after) + after.size(), bytes.size(), bytes));
        const std::string failure = inspect(inspected);
        EXPECT_NE(failure.find(words), std::string::npos) << failure;
        world.folder.write(file, good);
    }
    const std::string older =
        (world.folder / "site" / ("editor-2-" + hashes["2"].substr(0, 16) + ".container")).string();
    EXPECT_NE(inspect(older, manifest).find("another package"), std::string::npos);
    request.nowSeconds += 31 * kDay;
    EXPECT_NE(inspect(manifest), "");
    fs::remove(statement);
    EXPECT_NE(inspect(manifest).find("No release statement"), std::string::npos);
}
