#include "install/artifact_authenticity.h"

#include <gtest/gtest.h>

#include "install/install_world.h"
#include "install/release_statement.h"
#include "support/python.h"
#include "support/settable_system.h"

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
    const std::pair<std::string, std::string> cases[] = {
        {Statement().text(), ""},
        {Statement().text(kOther), kUnsigned},
        {with(&Statement::first, "release-statement-v2"), kMalformed},
        {with(&Statement::version, "1.4.1"), kDifferent},
        {with(&Statement::version, ""), kDifferent},
        {with(&Statement::size, "101"), kDifferent},
        {with(&Statement::size, "0100"), kMalformed},
        {with(&Statement::size, "+100"), kMalformed},
        {with(&Statement::size, "-100"), kMalformed},
        {with(&Statement::size, " 100"), kMalformed},
        {with(&Statement::size, "100 "), kMalformed},
        {with(&Statement::size, "0x64"), kMalformed},
        {with(&Statement::size, ""), kMalformed},
        {with(&Statement::size, "99999999999999999999"), kMalformed},
        {with(&Statement::sha256, std::string(64, '2')), kDifferent},
        {with(&Statement::sha256, ""), kDifferent},
        {with(&Statement::plaintext, std::string(64, '2')), kDifferent},
        {with(&Statement::status, "withdrawn"), kWithdrawn},
        {with(&Statement::status, "ok "), kWithdrawn},
        {with(&Statement::status, ""), kWithdrawn},
        {with(&Statement::version, "1.4.2\nsize: 100"), kMalformed},
        {with(&Statement::version, "1.4.2\r"), kMalformed},
        {with(&Statement::version, "1.4.é"), kMalformed},
        {with(&Statement::version, "1.4.2\t"), kMalformed},
        {days(kNow, kNow), kMalformed},
        {days(kNow, kNow - 1), kMalformed},
        {days(kNow, kNow + 92 * kDay), ""},
        {days(kNow, kNow + 92 * kDay + 1), kMalformed},
        {days(kNow + kDay, kNow + 2 * kDay), ""},
        {days(kNow + kDay + 1, kNow + 2 * kDay), kEarly},
        {days(kNow - 2 * kDay, kNow - kDay), ""},
        {days(kNow - 2 * kDay, kNow - kDay - 1), kExpired},
        {days(9223372036854775806, 9223372036854775807), kEarly},
        {days(0, 1), kExpired},
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
    const std::string long4096 = std::string(4096, 'x');
    const std::pair<std::string, std::string> cases[] = {
        {body + other + good, ""},
        {body + other + other + other + good, ""},
        {body + other + other + other + other + good, kMalformed},
        {body + other + other, kUnsigned},
        {body, kMalformed},
        {"", kMalformed},
        {"\n" + body + good, kMalformed},
        {body + good + "\n", kMalformed},
        {body + "\n" + good, kMalformed},
        {body + good.substr(0, good.size() - 1), kMalformed}, // no last line feed
        {body + good + "more: 1\n", kMalformed},
        {body + "more: 1\n" + good, kMalformed},
        {body + strayBits, kMalformed},
        {body + "ed25519: " + good.substr(9, 87) + "\n", kMalformed}, // no padding
        {body + "ed25519:  " + good.substr(9), kMalformed},
        {body + "ed25519: \n", kMalformed},
        {body + "Ed25519: " + good.substr(9), kMalformed},
        {std::string("\xEF\xBB\xBF") + body + good, kMalformed},
        {body + good + std::string(1, '\0'), kMalformed},
        {body + good + long4096, kMalformed},
        {body.substr(0, body.find("size")) + body.substr(body.find("sha256")) + good, kMalformed},
    };
    for (const auto& [text, verdict] : cases)
        EXPECT_EQ(judge(text), verdict) << text;

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
    const std::pair<std::string, std::size_t> cases[] = {
        {a, 1},
        {a + " " + b, 2},
        {"  " + a + "   " + b + " ", 2},
        {a + " " + a + " " + a + " " + a, 4},
        {"", 0},
        {"   ", 0},
        {a + " x", 0},
        {a + " " + a + " " + a + " " + a + " " + a, 0},
        {a + "," + b, 0},
        {a.substr(0, 43), 0},
        {strayBits, 0},
        {a + "\n", 0},
        {a + a, 0},
        {toBase64("too short"), 0},
        {toBase64(std::string(33, 'x')), 0},
    };
    for (const auto& [text, count] : cases)
        EXPECT_EQ(parsePublisherKeys(text).size(), count) << text;
    EXPECT_EQ(parsePublisherKeys(a + " " + b), (std::vector{kKey.publicKey(), kOther.publicKey()}));
    const PackageIdentity package{"1.4.2", 100, std::string(64, '1'), "-"};
    EXPECT_EQ(judgeReleaseStatement(Statement().text(), parsePublisherKeys(b + " " + a), package, kNow), "");
}

TEST(ReleaseStatement, VerifiesSignaturesOfAnotherLibrary) {
    const TemporaryFolder folder;
    const std::string script = R"(
from base64 import b64encode
from cryptography.hazmat.primitives.asymmetric.ed25519 import Ed25519PrivateKey
from cryptography.hazmat.primitives.serialization import Encoding, PublicFormat
key = Ed25519PrivateKey.generate()
open('statement', 'ab').write(b'ed25519: ' + b64encode(key.sign(open('statement', 'rb').read())) + b'\n')
open('key', 'wb').write(b64encode(key.public_key().public_bytes(Encoding.Raw, PublicFormat.Raw)))
)";
    folder.write("statement", Statement().body());
    if (!runPython(script, folder.path(), "cryptography")) GTEST_SKIP() << "python3 with cryptography is missing";
    const auto keys = parsePublisherKeys(readFileBytes(folder / "key"));
    ASSERT_EQ(keys.size(), 1u);
    EXPECT_EQ(judgeReleaseStatement(readFileBytes(folder / "statement"), keys,
                                    {"1.4.2", 100, std::string(64, '1'), "-"}, kNow),
              "");
}

// In the pipeline: what is asked of the service, and what a refusal leaves behind.
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
        int status = 200;
        bool pinned = true;
    };
    std::vector<Case> cases = {
        {"good", ""},
        {"nothing pinned", "", "", ""},
        {"keys without address", kBadKey, key, ""},
        {"address without keys", kBadKey, ""},
        {"no key", kBadKey, "AAAA"},
        {"another key", kUnsigned, toBase64(kOther.publicKey())},
        {"plain http", unreachable, key, "http"},
        {"404", unpublished, key, "/statements", nullptr, 404},
        {"206", unpublished, key, "/statements", nullptr, 206},
        {"reset", unreachable, key, "/statements", [](TlsConnection& c) { c.reset(); }},
        {"endless", kMalformed, key, "/statements",
         [](TlsConnection& c) {
             c.write("HTTP/1.1 200 OK\r\n\r\n");
             while (c.write(std::string(1000, 'x'))) {
             }
         }},
        {"cut", kMalformed, key, "/statements",
         [](TlsConnection& c) { c.write("HTTP/1.1 200 OK\r\n\r\n" + Statement().text().substr(0, 200)); }},
    };
    for (const bool encrypted : {false, true}) {
        const std::string package = encrypted ? sealContainer(archive, contentKey) : archive;
        for (const Case& c : cases) {
            InstallWorld world;
            world.installOldEditor();
            setCurrentTime(kNow);
            world.release("2.0", package, "\"encryption\":{\"key\":\"" + toBase64(contentKey) + "\"},");
            Statement statement;
            statement.version = "2.0";
            statement.size = std::to_string(package.size());
            statement.sha256 = sha256Hex(package);
            if (encrypted) statement.plaintext = sha256Hex(archive);
            const std::string path = "/statements/" + statement.sha256 + ".txt";
            world.serve(path, statement.text(), c.status);
            if (c.answer) world.serve(path, c.answer);
            const std::string url = c.url.starts_with("/") ? world.url(c.url)
                                    : c.url.empty()        ? ""
                                                           : "http://127.0.0.1/s";
            world.state({url, c.keys});
            const Outcome outcome = world.run();
            const Tree downloads = treeOf(world.downloads);
            EXPECT_EQ(downloads, (Tree{{"zantor_editor_2.0.zip", package}})) << c.what;
            if (c.verdict.empty()) {
                EXPECT_EQ(outcome.message, "Installed — version 2.0") << c.what;
                continue;
            }
            EXPECT_EQ(outcome.message, "Authenticity check failed: " + c.verdict) << c.what;
            EXPECT_EQ(outcome.status, EditorInstallStatus::Failed);
            EXPECT_EQ(outcome.rows, std::vector{DownloadStatus::Installing}) << c.what;
            EXPECT_TRUE(world.oldEditorIsUntouched()) << c.what;
            EXPECT_TRUE(fs::is_empty(world.staging)) << c.what;
        }
    }
}

// Whoever holds the update server can replace package, checksum and key together, but not the statement.
TEST(ArtifactAuthenticity, ATakenOverServerInstallsNothing) {
    const std::string theirs = makeZip({{"editor.exe", "theirs"}});
    InstallWorld world;
    world.installOldEditor();
    setCurrentTime(kNow);
    world.release("2.0", theirs);
    Statement statement; // a genuine one, of another package, served at the place of theirs
    statement.version = "2.0";
    world.serve("/s/" + sha256Hex(theirs) + ".txt", statement.text());
    world.state({world.url("/s"), toBase64(kKey.publicKey())});
    EXPECT_EQ(world.run().message, "Authenticity check failed: " + kDifferent);
    EXPECT_TRUE(world.oldEditorIsUntouched());
}
