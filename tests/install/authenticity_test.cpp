#include <gtest/gtest.h>

#include "install/artifact_authenticity.h"
#include "install/install_world.h"
#include "install/release_statement.h"
#include "support/recording_system.h"

namespace {

constexpr std::int64_t kDay = 86400;
constexpr std::int64_t kNow = 20000 * kDay;
const PublisherKey kKey = publisherKey();
const PublisherKey kOther = publisherKey();
const std::string kMalformed = "the release statement is malformed.";
const std::string kUnsigned = "the release is not signed by a trusted key.";
const std::string kDifferent = "the release statement is for a different package.";

std::string statementBody(const std::string& version, const std::string& size, const std::string& sha256,
                          const std::string& plaintext) {
    return "release-statement-v1\nversion: " + version + "\nsize: " + size + "\nsha256: " + sha256 +
           "\nplaintext-sha256: " + plaintext + "\nnot-before: " + std::to_string(kNow - kDay) +
           "\nnot-after: " + std::to_string(kNow + kDay) + "\nstatus: ok\n";
}

std::string signatureOf(const std::string& body, const PublisherKey& key = kKey) {
    return "ed25519: " + toBase64(key.sign(body)) + "\n";
}

const std::string kBody = statementBody("1.4.2", "100", std::string(64, '1'), "-");

std::string judge(const std::string& text, std::int64_t now = kNow) {
    return judgeReleaseStatement(text, {kKey.publicKey()}, {"1.4.2", 100, std::string(64, '1'), "-"}, now);
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
         {"", "size: ", "size: 0100", "size: +100", "size: 100 ", "size: " + std::string(20, '9')},
         kMalformed},
        {"111\n", {"112\n", "\n"}, kDifferent},
        {": -\n", {": " + std::string(64, '2') + "\n"}, kDifferent},
        {"status: ok", {"status: ok ", "status: "}, "this release was withdrawn by its publisher."},
        {notAfter, {endsAt(kNow + 91 * kDay)}, ""}, // 92 days after its beginning
        {notAfter, {endsAt(kNow + 91 * kDay + 1), endsAt(kNow - kDay)}, kMalformed},
    };
    for (const auto& [line, replacements, verdict] : cases) {
        for (const std::string& replacement : replacements) {
            const std::string body = replaced(kBody, line, replacement);
            EXPECT_EQ(judge(body + signatureOf(body)), verdict) << body;
        }
    }
    const std::string good = kBody + signatureOf(kBody); // valid for a day before and after, and a day of tolerance
    const std::string check = " Check this computer's date and time.";
    EXPECT_EQ(judge(good, kNow - 2 * kDay), "");
    EXPECT_EQ(judge(good, kNow - 2 * kDay - 1), "the release statement is not valid yet." + check);
    EXPECT_EQ(judge(good, kNow + 2 * kDay), "");
    EXPECT_EQ(judge(good, kNow + 2 * kDay + 1), "the release statement has expired." + check);
}

TEST(ReleaseStatement, HasOneForm) {
    const std::string good = signatureOf(kBody);
    const std::string other = signatureOf(kBody, kOther);
    std::string strayBits = good; // the last digit before the padding holds bits that decoding drops
    strayBits[strayBits.size() - 4]++;
    EXPECT_EQ(judge(kBody + other + other + other + good), "");
    EXPECT_EQ(judge(kBody + other), kUnsigned);
    for (const std::string& text :
         {kBody + other + other + other + other + good, kBody + "\n" + good, kBody + good + "more: 1\n",
          kBody + "more: 1\n" + good, kBody + strayBits, "\xEF\xBB\xBF" + kBody + good, kBody + good + '\0'})
        EXPECT_EQ(judge(text), kMalformed) << text;
    const std::string text = kBody + good;
    for (std::size_t i = 0; i < text.size(); ++i) {
        EXPECT_EQ(judge(text.substr(0, i)), kMalformed) << i;
        std::string changed = text;
        changed[i] ^= 1;
        EXPECT_NE(judge(changed), "") << i;
    }
}

TEST(ReleaseStatement, TakesOneToFourUsableKeys) {
    const std::string a = toBase64(kKey.publicKey());
    const std::string b = toBase64(kOther.publicKey());
    EXPECT_EQ(parsePublisherKeys("  " + a + "   " + b + " "), (std::vector{kKey.publicKey(), kOther.publicKey()}));
    for (const std::string& unusable : {std::string("  "), a + " x", a + " " + a + " " + a + " " + a + " " + a,
                                        a + "," + b, toBase64(std::string(31, 'x')), toBase64(std::string(33, 'x'))})
        EXPECT_TRUE(parsePublisherKeys(unusable).empty()) << unusable;
}

// An attacker with the update server can replace package, checksum and key together, but not the statement.
TEST(ArtifactAuthenticity, AFailedCheckStopsTheInstallWithTheOldEditorInPlace) {
    const std::string archive = makeZip({{"editor.exe", "new"}});
    const std::string contentKey(32, 'k');
    const std::string key = toBase64(kKey.publicKey());
    const std::string otherKey = toBase64(kOther.publicKey());
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
        const std::string body =
            statementBody("2.0", std::to_string(package.size()), sha256Hex(package), sealed ? sha256Hex(archive) : "-");
        for (const auto& c : cases) {
            SCOPED_TRACE(c.what);
            InstallWorld world;
            world.installOldEditor();
            world.release("2.0", package, "\"encryption\":{\"key\":\"" + toBase64(contentKey) + "\"},");
            world.serve("/statements/" + sha256Hex(package) + ".txt",
                        c.answer == "the right one" ? httpAnswer(200, body + signatureOf(body)) : c.answer);
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
