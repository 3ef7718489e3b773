// Tests the manifest stage of a run, and the start of a run.

#include <atomic>

#include <gtest/gtest.h>

#include "install/install_world.h"
#include "install/update_manifest.h"
#include "support/eventually.h"

namespace fs = std::filesystem;

TEST(UpdateManifestText, TakesTextsAndNothingElse) {
    const std::string invalid = "The update manifest is not valid JSON.";
    const std::string missing = "The update manifest is missing its version or url field.";
    const std::string deep(200000, '[');
    const std::string start = R"({"version":"1","url":"u")";
    const std::pair<std::string, std::string> cases[] = {
        {R"({"version":"","version":"1","url":"u"})", missing}, // of two equal keys, the first counts
        {start + R"(,"x":)" + deep + std::string(deep.size(), ']') + "}", ""},
        {start + R"(,"sha256":7,"encryption":"k"})", ""},
        {"\xEF\xBB\xBF " + start + R"(,"encryption":{"key":[]}} )", ""},
        {start, invalid},
        {"[]", invalid},
        {deep, invalid},
        {start + R"(,"x":")" + std::string(600000, ',') + "\"}", invalid}, // more commas than the parser accepts
    };
    for (const auto& [body, failure] : cases) {
        UpdateManifest manifest;
        std::string text;
        EXPECT_EQ(parseUpdateManifest(body, manifest, text), failure.empty()) << body.substr(0, 80);
        EXPECT_EQ(text, failure) << body.substr(0, 80);
    }
    UpdateManifest manifest;
    std::string text;
    ASSERT_TRUE(parseUpdateManifest(R"({"x":{"version":"0"},"version":"1\u0000b","url":"u","sha256":"s",)"
                                    R"("plaintext_sha256":"p","encryption":{"key":"k","key":"l"}})",
                                    manifest, text));
    EXPECT_EQ(manifest.version, std::string("1\0b", 3));
    EXPECT_EQ(manifest.url + manifest.sha256 + manifest.plaintextSha256 + manifest.encryptionKey, "uspk");
    EXPECT_EQ(sanitizeVersion("azAZ09.-/:@[`{_+ \x7F\xC3\xA9"), "azAZ09.-____________");
}

TEST(UpdateCheck, ABadAnswerFailsAndNoAnswerFallsBackToTheEditor) {
    const std::string unconfigured = "Idle: Update server not configured. Please locate or install VOLO Editor. []";
    const std::string unreachable = "Failed: Could not reach the update server, and no local editor was found. []";
    const std::string offline = "InstalledOffline: Installed (offline mode) []";
    const std::string invalid = "Failed: The update manifest is not valid JSON. []";
    const std::string notHttps = "Failed: The update manifest URL must be a valid https:// URL. []";
    const auto http = [](int status) {
        return "Failed: The update server returned HTTP " + std::to_string(status) + " for the manifest. []";
    };
    const struct {
        std::string answer, withoutEditor, withEditor;
        std::string url = "the server's";
    } cases[] = {
        {"", unreachable, offline},
        {"HTTP/1.1 200 OK\r\nContent-Length: 99\r\n\r\n{", unreachable, offline},
        {"HTTP/1.1 200 OK\r\n\r\n{\"version\":\"1.0\"", invalid, invalid},
        {httpAnswer(404, "{}"), http(404), http(404)},
        {"HTTP/1.1 302 x\r\nLocation: /package\r\nContent-Length: 0\r\n\r\n", http(302), http(302)},
        {"", unconfigured, offline, ""},
        {"", unconfigured, offline, "https://127.0.0.1/manifest?a=YOUR_SERVER"},
        {"", notHttps, notHttps, "http:"},
    };
    for (const bool editor : {false, true}) {
        for (const auto& c : cases) {
            InstallWorld world;
            world.serve("/manifest", c.answer);
            const bool serverIsAsked = c.url == "the server's";
            if (!serverIsAsked) world.manifestUrl = c.url;
            if (editor) world.installOldEditor();
            const Tree before = treeOf(world.folder.path());
            EXPECT_EQ(world.run(), editor ? c.withEditor : c.withoutEditor) << c.url << c.answer;
            EXPECT_EQ(treeOf(world.folder.path()), before) << "this stage leaves nothing on disk";
            EXPECT_EQ(world.requestCount(), serverIsAsked ? 1u : 0u);
        }
    }
}

TEST(UpdateCheck, ComparesVersionsByteForByteAfterThePackageAddress) {
    const std::string package = makeZip({{"editor.exe", "new"}});
    InstallWorld world;
    world.installOldEditor();
    world.serve("/manifest", httpAnswer(200, R"({"version":"1.0","url":"http://plain/package"})"));
    EXPECT_EQ(world.run(), "Failed: The package URL in the update manifest must be a valid https:// URL. []");
    world.release("1.0", package);
    EXPECT_EQ(world.run(), "Installed: Installed — version 1.0 []");
    world.expectOldEditor({}, false);

    world.folder.write(world.editor / ".zantor_editor_version", "1.0 \r\nsecond line");
    EXPECT_EQ(world.run(), "Installed: Installed — version 1.0 []");
    world.folder.write(world.editor / ".zantor_editor_version", "1.0\t");
    EXPECT_EQ(world.run(), "Installed: Installed — version 1.0 [Installed]") << "a tab belongs to the version";
    fs::remove(world.editor / "editor.exe");
    world.run();
    EXPECT_EQ(readFileBytes(world.editor / "editor.exe"), "new") << "a marker without an editor";
    world.release("1.0 ", package);
    EXPECT_EQ(world.run(), "Installed: Installed — version 1.0  [Installed Installed]") << "another version";
}

// A worker reports its failure shortly before its thread ends. The user may start a retry in between.
TEST(InstallState, ARetryStartsOneWorkerAndJoinIfFinishedDoesNotWaitForIt) {
    InstallWorld world;
    std::atomic<int> requests = 0;
    std::atomic<bool> released = false;
    world.serve("/manifest", [&](TlsConnection& connection) {
        const bool isRetry = ++requests > 1;
        for (int i = 0; i < 500 && isRetry && !released; ++i)
            connection.pause(10);
        connection.write(httpAnswer(404, ""));
    });
    world.state().startUpdate();
    ASSERT_TRUE(eventually([&] { return world.state().status() == EditorInstallStatus::Failed; }));
    world.state().startUpdate();
    world.state().startUpdate();    // a run is active: no other starts
    world.state().joinIfFinished(); // must not wait for the server's answer
    EXPECT_EQ(world.state().statusMessage(), "Checking for updates…");
    released = true;
    world.finish();
    EXPECT_EQ(requests, 2);
}
