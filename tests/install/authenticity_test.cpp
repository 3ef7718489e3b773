#include <gtest/gtest.h>

#include "install/artifact_authenticity.h"
#include "install/install_world.h"
#include "install/release_statement.h"
#include "support/recording_system.h"

namespace fs = std::filesystem;

namespace {

constexpr std::int64_t kNow = 1795500000;
constexpr std::int64_t kDay = 86400;
const SigningKey kKey('a');
const SigningKey kOther('b');
const std::string kMalformed = "the release statement is malformed.";
const std::string kUnsigned = "the release is not signed by a trusted key.";
const std::string kDifferent = "the release statement is for a different package.";
const std::string kWithdrawn = "this release was withdrawn by its publisher.";
const std::string kEarly = "the release statement is not valid yet. Check this computer's date and time.";
const std::string kExpired = "the release statement has expired. Check this computer's date and time.";
const std::string kBadKey = "the publisher key in the launcher configuration is not usable.";

// The fields of a statement, each changeable by a test.
struct Statement {
    std::string first = "release-statement-v1";
    std::string version = "1.4.2", size = "100", sha256 = std::string(64, '1'), plaintext = "-";
    std::string notBefore = std::to_string(kNow - kDay), notAfter = std::to_string(kNow + 30 * kDay), status = "ok";

    std::string body() const {
        return first + "\nversion: " + version + "\nsize: " + size + "\nsha256: " + sha256 +
               "\nplaintext-sha256: " + plaintext + "\nnot-before: " + notBefore + "\nnot-after: " + notAfter +
               "\nstatus: " + status + "\n";
    }
    std::string text(const SigningKey& key = kKey) const { return body() + signatureLine(body(), key); }
    static std::string signatureLine(const std::string& body, const SigningKey& key) {
        return "ed25519: " + toBase64(key.sign(body)) + "\n";
    }
};

std::string judge(const std::string& text, std::int64_t now = kNow, const SigningKey& key = kKey) {
    return judgeReleaseStatement(text, {key.publicKey()}, {"1.4.2", 100, std::string(64, '1'), "-"}, now);
}

} // namespace

TEST(ReleaseStatement, IsBelievedOnlyWhenEveryFieldHolds) {
    const auto with = [](std::string Statement::*field, const std::string& value) {
        Statement statement;
        statement.*field = value;
        return statement.text();
    };
    const auto days = [](std::int64_t from, std::int64_t to) {
        Statement statement;
        statement.notBefore = std::to_string(from);
        statement.notAfter = std::to_string(to);
        return statement.text();
    };
    const struct {
        std::string Statement::*field;
        std::vector<std::string> values;
        std::string verdict;
    } fields[] = {
        {&Statement::first, {"release-statement-v1"}, ""},
        {&Statement::first, {"release-statement-v2"}, kMalformed},
        {&Statement::version, {"1.4.1", ""}, kDifferent},
        {&Statement::version, {"1.4.2\nsize: 100", "1.4.2\r", "1.4.é", "1.4.2\t"}, kMalformed},
        {&Statement::size, {"101"}, kDifferent},
        {&Statement::size, {"0100", "+100", "-100", " 100", "100 ", "0x64", "", "99999999999999999999"}, kMalformed},
        {&Statement::sha256, {std::string(64, '2'), ""}, kDifferent},
        {&Statement::plaintext, {std::string(64, '2')}, kDifferent},
        {&Statement::status, {"withdrawn", "ok ", ""}, kWithdrawn},
    };
    for (const auto& [field, values, verdict] : fields) {
        for (const std::string& value : values)
            EXPECT_EQ(judge(with(field, value)), verdict) << value;
    }
    EXPECT_EQ(judge(Statement().text(kOther)), kUnsigned);
    const std::pair<std::string, std::string> cases[] = {
        {days(kNow, kNow), kMalformed},
        {days(kNow, kNow + 92 * kDay), ""},
        {days(kNow, kNow + 92 * kDay + 1), kMalformed},
        {days(kNow + kDay, kNow + 2 * kDay), ""},
        {days(kNow + kDay + 1, kNow + 2 * kDay), kEarly},
        {days(kNow - 2 * kDay, kNow - kDay), ""},
        {days(kNow - 2 * kDay, kNow - kDay - 1), kExpired},
        {days(9223372036854775806, 9223372036854775807), kEarly}, // no overflow
    };
    for (const auto& [text, verdict] : cases)
        EXPECT_EQ(judge(text), verdict) << text;
}

TEST(ReleaseStatement, HasOneFormOnly) {
    const std::string body = Statement().body();
    const std::string good = Statement::signatureLine(body, kKey);
    const std::string other = Statement::signatureLine(body, kOther);
    std::string strayBits = good; // the last digit before the padding holds bits that decoding drops
    strayBits[strayBits.size() - 4]++;
    const std::string size = body.substr(body.find("size"), body.find("sha256") - body.find("size"));
    std::string withoutSize = body;
    withoutSize.erase(body.find(size), size.size());
    const std::string bare = good.substr(9);
    EXPECT_EQ(judge(body + other + good), "");
    EXPECT_EQ(judge(body + other + other + other + good), "");
    EXPECT_EQ(judge(body + other + other), kUnsigned);
    const std::string malformed[] = {
        body + other + other + other + other + good,
        body,
        "",
        body + "\n" + good,
        body + good.substr(0, good.size() - 1),
        body + good + "more: 1\n",
        body + "more: 1\n" + good,
        body + strayBits,
        body + "ed25519: " + bare.substr(0, 87) + "\n",
        body + "ed25519:  " + bare,
        body + "Ed25519: " + bare,
        "\xEF\xBB\xBF" + body + good,
        body + good + '\0',
        body + good + std::string(4096, 'x'),
        withoutSize + good,
    };
    for (const std::string& text : malformed)
        EXPECT_EQ(judge(text), kMalformed) << text;

    // No byte of it can be changed, and none of its beginnings passes.
    const std::string text = body + good;
    for (std::size_t i = 0; i < text.size(); ++i) {
        std::string changed = text;
        changed[i] = static_cast<char>(changed[i] ^ 1);
        EXPECT_NE(judge(changed), "") << i;
        EXPECT_EQ(judge(text.substr(0, i)), kMalformed) << i;
    }
}

TEST(ReleaseStatement, TakesOneToFourUsableKeysOrNone) {
    const std::string a = toBase64(kKey.publicKey());
    const std::string b = toBase64(kOther.publicKey());
    std::string strayBits = a;
    strayBits[42]++;
    const auto keys = [](const std::string& text) { return parsePublisherKeys(text).size(); };
    EXPECT_EQ(keys(a), 1u);
    EXPECT_EQ(keys("  " + a + "   " + b + " "), 2u);
    for (const std::string& unusable :
         {std::string(), std::string("   "), a + " x", a + " " + a + " " + a + " " + a + " " + a, a + "," + b,
          a.substr(0, 43), strayBits, a + "\n", a + a, toBase64("too short"), toBase64(std::string(33, 'x'))})
        EXPECT_EQ(keys(unusable), 0u) << unusable;
    EXPECT_EQ(parsePublisherKeys(a + " " + b), (std::vector{kKey.publicKey(), kOther.publicKey()}));
    const PackageIdentity package{"1.4.2", 100, std::string(64, '1'), "-"};
    EXPECT_EQ(judgeReleaseStatement(Statement().text(), parsePublisherKeys(b + " " + a), package, kNow), "");
}

// In the pipeline: what is asked of the service, and what a refusal leaves behind. Whoever holds the update server can
// replace package, checksum and key together, but not the statement.
TEST(ArtifactAuthenticity, StopsTheInstallWithTheOldEditorInPlace) {
    const std::string archive = makeZip({{"editor.exe", "new"}});
    const std::string contentKey(32, 'k');
    const std::string unreachable = "the authenticity service could not be reached.";
    const std::string unpublished = "no release statement is published for this package.";
    const std::string key = toBase64(kKey.publicKey());
    struct Case {
        const char* what;
        std::string verdict;
        std::string keys = toBase64(kKey.publicKey());
        std::string url = "/statements";
        InstallWorld::Answer answer = nullptr; // in the place of the statement
    };
    const auto writes = [](const std::string& bytes) { return [bytes](TlsConnection& c) { c.write(bytes); }; };
    const auto endless = [](TlsConnection& c) {
        c.write("HTTP/1.1 200 OK\r\n\r\n");
        while (c.write(std::string(1000, 'x'))) {
        }
    };
    Statement genuine; // and of another package
    genuine.version = "2.0";
    const Case cases[] = {
        {"good", ""},
        {"nothing pinned", "", "", ""},
        {"keys without address", kBadKey, key, ""},
        {"address without keys", kBadKey, ""},
        {"no key", kBadKey, "AAAA"},
        {"another key", kUnsigned, toBase64(kOther.publicKey())},
        {"plain http", unreachable, key, "http"},
        {"404", unpublished, key, "/statements", writes(httpAnswer(404, Statement().text()))},
        {"206", unpublished, key, "/statements", writes(httpAnswer(206, Statement().text()))},
        {"reset", unreachable, key, "/statements", [](TlsConnection& c) { c.reset(); }},
        {"endless", kMalformed, key, "/statements", endless},
        {"cut", kMalformed, key, "/statements", writes("HTTP/1.1 200 OK\r\n\r\n" + Statement().text().substr(0, 200))},
        {"of another package", kDifferent, key, "/statements", writes(httpAnswer(200, genuine.text()))},
    };
    for (const bool encrypted : {false, true}) {
        const std::string package = encrypted ? sealContainer(archive, contentKey) : archive;
        for (const Case& c : cases) {
            InstallWorld world;
            world.installOldEditor();
            setRecordedTime(kNow);
            world.release("2.0", package, "\"encryption\":{\"key\":\"" + toBase64(contentKey) + "\"},");
            Statement statement;
            statement.version = "2.0";
            statement.size = std::to_string(package.size());
            statement.sha256 = sha256Hex(package);
            if (encrypted) statement.plaintext = sha256Hex(archive);
            const std::string path = "/statements/" + statement.sha256 + ".txt";
            world.serve(path, statement.text());
            if (c.answer) world.serve(path, c.answer);
            SCOPED_TRACE(c.what);
            world.state({c.url == "http" ? "http://127.0.0.1/s" : c.url.empty() ? "" : world.url(c.url), c.keys});
            const bool good = c.verdict.empty();
            EXPECT_EQ(world.run(),
                      good ? installed("2.0", 1)
                           : failed("Authenticity check failed: " + c.verdict, {DownloadStatus::Installing}));
            EXPECT_EQ(treeOf(world.downloads), (Tree{{"zantor_editor_2.0.zip", package}}));
            EXPECT_EQ(world.oldEditorIsUntouched(), !good);
            EXPECT_EQ(fs::exists(world.staging), !good);
            EXPECT_TRUE(treeOf(world.staging).empty());
        }
    }
}
