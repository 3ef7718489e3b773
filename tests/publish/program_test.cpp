// The program itself, and tools that share no code with it.

#include <gtest/gtest.h>

#include "install/base64.h"
#include "publish/inspect.h"
#include "publish_world.h"
#include "support/python.h"

namespace fs = std::filesystem;

namespace {

struct Ran {
    int status = -1;
    std::string out;
    std::string err;
};

class Program : public testing::Test {
  protected:
    // Runs a shell command in the world's folder.
    Ran shell(const std::string& command) {
        const int status =
            std::system(("cd '" + world.folder.string() + "' && (" + command + ") >out.txt 2>err.txt").c_str());
#ifndef _WIN32
        const int code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
#else
        const int code = status;
#endif
        return {code, readFileBytes(world.folder / "out.txt"), readFileBytes(world.folder / "err.txt")};
    }
    Ran publish(const std::string& arguments) {
        return shell(std::string(VOLO_PUBLISH_PROGRAM) + " " + arguments);
    }
    bool has(const std::string& tool) {
        return shell("command -v " + tool).status == 0;
    }

    PublishWorld world;
    const std::string release = "release --zip editor.zip --version 1.4.2 --platform linux "
                                "--base-url https://updates.example/linux --sign-key first.key --out site";
};

} // namespace

TEST_F(Program, TellsByItsExitStatusWhatHappened) {
    std::string blankVersion = release;
    blankVersion.replace(blankVersion.find("1.4.2"), 5, "'1 '");
    const std::tuple<std::string, int, std::string> cases[] = {
        {"--help", 0, ""},
        {"release --help", 0, ""},
        {"", 2, "subcommand is required"},
        {"bogus", 2, "--help tells more"},
        {"keygen", 2, "FILE is required"},
        {"inspect", 2, "FILE is required"},
        {"release --zip editor.zip", 2, "is required"},
        {release + " --days 0", 2, "--days"},
        {release + " --days 93", 2, "--days"},
        {release + " --days x", 2, "--days"},
        {release + " --platform amiga", 2, "--platform"},
        {release + " more", 2, "more"},
        {release + " --sign-key a --sign-key b --sign-key c --sign-key d", 2, "four times"},
        {"statement --out site --all", 2, "--sign-key is required"},
        {"statement --out site --revoke --sign-key first.key", 2, "--revoke needs"},
        {"statement --out site --revoke --all --sign-key first.key", 2, "excludes"},
        {"statement --out site --version 1 --sign-key first.key", 1, "No release statement"},
        {"keygen first.key", 1, "exists"},
        {"keygen no/such/folder/key", 1, "could not be written"},
        {"inspect nothing", 1, "is no file"},
        {"inspect first.key", 1, "is neither"},
        {"inspect editor.zip --keys x", 1, "public keys"},
        {release + " --sign-key editor.zip", 1, "no Ed25519 private key"},
        {release + " --sign-key nothing", 1, "cannot be read"},
        {blankVersion, 1, "The version"},
        {"inspect editor.zip", 0, ""},
        {release + " --days 10", 0, "warning: The statement ends in 10 days"},
        {"statement --out site", 0, "warning: The statement of 1.4.2"},
        {"statement --out site --all --sign-key first.key --sign-key second.key", 0, ""},
        {"inspect site/manifest.json", 0, ""},
    };
    for (const auto& [arguments, status, words] : cases) {
        const Ran run = publish(arguments);
        EXPECT_EQ(run.status, status) << arguments << "\n" << run.err;
        EXPECT_NE(run.err.find(words), std::string::npos) << arguments << "\n" << run.err;
        EXPECT_EQ(run.err.empty(), words.empty()) << arguments << "\n" << run.err;
        EXPECT_TRUE(run.err.empty() || run.err.starts_with("volo-publish: ")) << run.err;
        EXPECT_EQ(run.out.empty(), status != 0) << arguments << "\n" << run.out;
    }
}

TEST_F(Program, KeepsThePrivateKeyToItself) {
    const auto mode = [&] { return fs::status(world.folder / "new.key").permissions(); };
    const fs::perms ownerOnly = fs::perms::owner_read | fs::perms::owner_write;
    std::string said = shell("umask 0; " VOLO_PUBLISH_PROGRAM " keygen new.key").out;
    EXPECT_EQ(mode(), ownerOnly);
    const std::string first = readFileBytes(world.folder / "new.key");
    EXPECT_EQ(publish("keygen new.key").status, 1);
    EXPECT_EQ(readFileBytes(world.folder / "new.key"), first);
    fs::permissions(world.folder / "new.key", fs::perms::others_read | fs::perms::group_read, fs::perm_options::add);
    const Ran warned = publish(release + " --sign-key new.key");
    EXPECT_NE(warned.err.find("other users"), std::string::npos);
    said += warned.out + warned.err;
    const Ran forced = publish("keygen new.key --force");
    EXPECT_EQ(forced.status, 0);
    EXPECT_EQ(mode(), ownerOnly);
    const std::string second = readFileBytes(world.folder / "new.key");
    EXPECT_NE(second, first);
    for (const std::string& command : {release + " --sign-key new.key",
                                       std::string("statement --out site --all "
                                                   "--sign-key new.key"),
                                       std::string("inspect site/manifest.json"), std::string("inspect new.key")}) {
        const Ran run = publish(command);
        said += run.out + run.err;
    }
    // The secret is the last 32 bytes of the key; the pairs of these tests do not share it with anything.
    for (const std::string& pem : {first, second}) {
        std::string body = pem.substr(pem.find('\n') + 1);
        const std::string der = base64DecodeCanonical(body.substr(0, body.find('\n')));
        ASSERT_EQ(der.size(), 48u);
        const std::string secret = der.substr(16);
        for (const std::string& form : {secret, base64Encode(secret), body.substr(22, 40)}) {
            EXPECT_EQ(said.find(form), std::string::npos) << said;
            for (const auto& [name, bytes] : world.files())
                EXPECT_EQ(bytes.find(form), std::string::npos) << name;
        }
    }
    for (const auto& entry : fs::directory_iterator(world.folder.path()))
        EXPECT_NE(entry.path().extension(), ".tmp") << entry.path();
}

TEST_F(Program, OtherToolsReadWhatItPublishes) {
    if (!has("openssl") || !has("unzip")) GTEST_SKIP() << "openssl or unzip is missing";
    ASSERT_EQ(publish(release + " --sign-key second.key").status, 0);
    const std::string script = R"(
import base64, glob, hashlib, json, struct
from cryptography.hazmat.primitives.ciphers.aead import AESGCM
m = json.load(open('site/manifest.json'))
p = open('site/' + m['url'].rsplit('/', 1)[1], 'rb').read()
assert hashlib.sha256(p).hexdigest() == m['sha256']
magic, version, nonce, tag, reserved, size = struct.unpack('>8sBBBBQ', p[:20])
assert (magic, version, nonce, tag, reserved, size) == (b'ZANTOR1\0', 1, 12, 16, 0, len(p) - 48)
z = AESGCM(base64.b64decode(m['encryption']['key'], validate=True)).decrypt(p[20:32], p[32:], None)
assert hashlib.sha256(z).hexdigest() == m['plaintext_sha256']
assert m['version'] == '1.4.2' and m['platform'] == 'linux'
open('opened.zip', 'wb').write(z)
s = open('site/statements/' + m['sha256'] + '.txt', 'rb').read()
body, *signatures = s.split(b'ed25519: ')
open('body', 'wb').write(body)
for i, signature in enumerate(signatures):
    open('signature%d' % i, 'wb').write(base64.b64decode(signature, validate=False))
lines = body.decode('ascii').split('\n')
assert lines[:5] == ['release-statement-v1', 'version: 1.4.2', 'size: %d' % len(p), 'sha256: ' + m['sha256'],
                     'plaintext-sha256: ' + m['plaintext_sha256']]
assert int(lines[6][11:]) - int(lines[5][12:]) == 30 * 86400 and lines[7:] == ['status: ok', '']
)";
    if (!runPython(script, world.folder.path(), "cryptography")) GTEST_SKIP() << "python3-cryptography is missing";
    const Ran unzip = shell("unzip -t opened.zip");
    EXPECT_EQ(unzip.status, 0) << unzip.out;
    EXPECT_EQ(readFileBytes(world.folder / "opened.zip"), world.archive);
    const auto verify = [&](const std::string& key, const std::string& signature) {
        return shell("openssl pkey -in " + key +
                     " -pubout -out public.pem && openssl pkeyutl -verify -rawin -pubin "
                     "-inkey public.pem -sigfile " +
                     signature + " -in body")
            .status;
    };
    EXPECT_EQ(verify("first.key", "signature0"), 0);
    EXPECT_EQ(verify("second.key", "signature1"), 0);
    EXPECT_NE(verify("second.key", "signature0"), 0);
}

TEST_F(Program, ReadsWhatOtherToolsMake) {
    if (!has("openssl")) GTEST_SKIP() << "openssl is missing";
    ASSERT_EQ(shell("umask 077; openssl genpkey -algorithm ed25519 -out theirs.key && "
                    "openssl pkey -in theirs.key -pubout -outform DER | tail -c 32 | base64 > theirs.pub")
                  .status,
              0);
    const std::string script = R"(
import base64, hashlib, json, os, subprocess, time, zipfile
from cryptography.hazmat.primitives.ciphers.aead import AESGCM
os.makedirs('theirs/statements')
with zipfile.ZipFile('theirs.zip', 'w', zipfile.ZIP_DEFLATED) as z: z.writestr('editor.exe', 'x' * 100000)
plain = open('theirs.zip', 'rb').read()
key, nonce = os.urandom(32), os.urandom(12)
package = b'ZANTOR1\0\1\x0c\x10\0' + len(plain).to_bytes(8, 'big') + nonce + AESGCM(key).encrypt(nonce, plain, None)
open('theirs/p', 'wb').write(package)
sha = hashlib.sha256(package).hexdigest()
now = int(time.time())
json.dump({'version': '5', 'url': 'https://a/p', 'sha256': sha, 'plaintext_sha256': hashlib.sha256(plain).hexdigest(),
           'encryption': {'key': base64.b64encode(key).decode()}}, open('theirs/manifest.json', 'w'))
body = ('release-statement-v1\nversion: 5\nsize: %d\nsha256: %s\nplaintext-sha256: %s\nnot-before: %d\nnot-after: %d\n'
        'status: ok\n' % (len(package), sha, hashlib.sha256(plain).hexdigest(), now, now + 86400 * 20)).encode()
open('body', 'wb').write(body)
subprocess.check_call('openssl pkeyutl -sign -rawin -inkey theirs.key -in body -out signature', shell=True)
open('theirs/statements/%s.txt' % sha, 'wb').write(
    body + b'ed25519: ' + base64.b64encode(open('signature', 'rb').read()) + b'\n')
)";
    if (!runPython(script, world.folder.path(), "cryptography")) GTEST_SKIP() << "python3-cryptography is missing";
    const Ran inspected = publish("inspect theirs/manifest.json --keys \"$(cat theirs.pub)\"");
    EXPECT_EQ(inspected.status, 0) << inspected.err;
    EXPECT_NE(inspected.out.find("tag is good"), std::string::npos);
    EXPECT_NE(inspected.out.find("signed by a key given"), std::string::npos);
    const Ran renewed = publish("statement --out theirs --all --sign-key theirs.key");
    EXPECT_EQ(renewed.status, 0) << renewed.err;
    EXPECT_EQ(renewed.err, "");
}
