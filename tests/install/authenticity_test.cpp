#include <gtest/gtest.h>

#include "install/artifact_authenticity.h"
#include "install/install_world.h"
#include "install/release_statement.h"
#include "publish/statement_writer.h"
#include "support/recording_system.h"

namespace {

constexpr std::int64_t kDay = 86400;
constexpr std::int64_t kNow = 20000 * kDay;
const std::vector<PublisherKey> kKeys = publisherKeys();
const std::vector<PublisherKey> kOtherKeys = publisherKeys();
const std::string kKey = kKeys[0].publicKey();
const std::string kOtherKey = kOtherKeys[0].publicKey();
const std::string kMalformed = "the release statement is malformed.";
const std::string kUnsigned = "the release is not signed by a trusted key.";
const std::string kDifferent = "the release statement is for a different package.";

// Returns a statement that is valid from one day before kNow to one day after it.
std::string statementFor(const PackageIdentity& package) {
    return writeStatement(package, "ok", kNow - kDay, 2, kKeys);
}

std::string signatureOf(const std::string& body, const std::vector<PublisherKey>& keys = kKeys) {
    return "ed25519: " + toBase64(keys[0].sign(body)) + "\n";
}

const PackageIdentity kPackage = {"1.4.2", 100, std::string(64, '1'), "-"};
const std::string kGood = statementFor(kPackage);
const std::string kBody = kGood.substr(0, kGood.find("ed25519"));

std::string judge(const std::string& text, std::int64_t now = kNow) {
    return judgeReleaseStatement(text, {kKey}, kPackage, now);
}

std::string replaced(std::string text, const std::string& from, const std::string& to) {
    return text.replace(text.find(from), from.size(), to);
}

} // namespace

TEST(ReleaseStatement, EveryFieldIsChecked) {
    const std::string notAfter = "not-after: " + std::to_string(kNow + kDay);
    const auto endsAt = [](std::int64_t seconds) { return "not-after: " + std::to_string(seconds); };
    const struct {
        std::string line;
        std::vector<std::string> replacements;
        std::string verdict;
    } cases[] = {
        {"v1\n", {"v2\n"}, kMalformed},
        {"1.4.2", {"1.4.1", ""}, kDifferent},
        {"1.4.2", {std::string(4096, '1'), "1.4.2\nsize: 100", "1.4.2\r", "1.4.é"}, kMalformed},
        {"size: 100", {"size: 101"}, kDifferent},
        {"size: 100",
         {"", "size: ", "size: 0100", "size: -100", "size: 100 ", "size: " + std::string(20, '9')},
         kMalformed},
        {"111\n", {"112\n", "\n"}, kDifferent},
        {": -\n", {": " + std::string(64, '2') + "\n"}, kDifferent},
        {"status: ok", {"status: ok ", "status: "}, "this release was withdrawn by its publisher."},
        {notAfter, {endsAt(kNow + 91 * kDay)}, ""}, // 92 days after not-before, the longest lifetime
        {notAfter, {endsAt(kNow + 91 * kDay + 1), endsAt(kNow - kDay)}, kMalformed},
    };
    for (const auto& [line, replacements, verdict] : cases) {
        for (const std::string& replacement : replacements) {
            const std::string body = replaced(kBody, line, replacement);
            EXPECT_EQ(judge(body + signatureOf(body)), verdict) << body;
        }
    }
    // kGood is valid from one day before to one day after kNow. The launcher tolerates a clock that is wrong by another
    // day.
    const std::string check = " Check this computer's date and time.";
    EXPECT_EQ(judge(kGood, kNow - 2 * kDay), "");
    EXPECT_EQ(judge(kGood, kNow - 2 * kDay - 1), "the release statement is not valid yet." + check);
    EXPECT_EQ(judge(kGood, kNow + 2 * kDay), "");
    EXPECT_EQ(judge(kGood, kNow + 2 * kDay + 1), "the release statement has expired." + check);
}

TEST(ReleaseStatement, HasOneForm) {
    const std::string good = signatureOf(kBody);
    const std::string other = signatureOf(kBody, kOtherKeys);
    std::string strayBits = good; // changes bits that a lenient decoder ignores, in the last digit before the padding
    strayBits[strayBits.size() - 4]++;
    EXPECT_EQ(judge(kBody + other + other + other + good), "");
    EXPECT_EQ(judge(kBody + other), kUnsigned);
    for (const std::string& text :
         {kBody + other + other + other + other + good, kBody + "\n" + good, kBody + good + "more: 1\n",
          kBody + "more: 1\n" + good, kBody + strayBits, "\xEF\xBB\xBF" + kBody + good, kBody + good + '\0'})
        EXPECT_EQ(judge(text), kMalformed) << text;
    for (std::size_t i = 0; i < kGood.size(); ++i) {
        EXPECT_EQ(judge(kGood.substr(0, i)), kMalformed) << i;
        std::string changed = kGood;
        changed[i] ^= 1;
        EXPECT_NE(judge(changed), "") << i;
    }
}

TEST(ReleaseStatement, TakesOneToFourUsableKeys) {
    const std::string a = toBase64(kKey);
    const std::string b = toBase64(kOtherKey);
    EXPECT_EQ(parsePublisherKeys("  " + a + "   " + b + " "), (std::vector{kKey, kOtherKey}));
    for (const std::string& unusable : {std::string("  "), a + " x", a + " " + a + " " + a + " " + a + " " + a,
                                        a + "," + b, toBase64(std::string(31, 'x')), toBase64(std::string(33, 'x'))})
        EXPECT_TRUE(parsePublisherKeys(unusable).empty()) << unusable;
}

// An attacker who controls the update server can replace package, checksum and key together, but cannot sign a
// statement for the new package.
TEST(ArtifactAuthenticity, AFailedCheckStopsTheInstallWithTheOldEditorInPlace) {
    const std::string archive = makeZip({{"editor.exe", "new"}});
    const std::string contentKey(32, 'k');
    const std::string key = toBase64(kKey);
    const std::string otherKey = toBase64(kOtherKey);
    const std::string badKey = "the publisher key in the launcher configuration is not usable.";
    const struct {
        const char* what;
        std::string verdict, keys, address;
        std::string answer = "the right one";
    } cases[] = {
        {"good", "", key + " " + otherKey, "/statements"},
        {"address with a slash at its end", "", key, "/statements/"},
        {"nothing pinned", "", "", ""},
        {"keys without address", badKey, key, ""},
        {"address without keys", badKey, "", "/statements"},
        {"another key", kUnsigned, otherKey, "/statements"},
        {"404", "no release statement is published for this package.", key, "/statements", httpAnswer(404, "")},
        {"reset", "the authenticity service could not be reached.", key, "/statements", ""},
        {"too long", kMalformed, key, "/statements", "HTTP/1.1 200 OK\r\n\r\n" + std::string(100000, 'x')},
    };
    setRecordedTime(kNow);
    for (const bool sealed : {false, true}) {
        const std::string package = sealed ? sealContainer(archive, contentKey) : archive;
        const std::string statement = statementFor(
            {"2.0", static_cast<std::int64_t>(package.size()), sha256Hex(package), sealed ? sha256Hex(archive) : "-"});
        for (const auto& c : cases) {
            SCOPED_TRACE(c.what);
            InstallWorld world;
            world.installOldEditor();
            world.release("2.0", package, "\"encryption\":{\"key\":\"" + toBase64(contentKey) + "\"},");
            world.serve("/statements/" + sha256Hex(package) + ".txt",
                        c.answer == "the right one" ? httpAnswer(200, statement) : c.answer);
            world.state({c.address.empty() ? "" : world.url(c.address), c.keys});
            if (c.verdict.empty()) {
                EXPECT_EQ(world.run(), "Installed: Installed — version 2.0 [Installed]");
            } else {
                EXPECT_EQ(world.run(), "Failed: Authenticity check failed: " + c.verdict + " [Installing]");
                world.expectOldEditor({{"zantor_editor_2.0.zip", package}}, true);
            }
        }
    }
}
