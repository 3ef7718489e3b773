#include <chrono>

#include <gtest/gtest.h>

#include "install/editor_install_state.h"
#include "install/install_world.h"
#include "install/update_manifest.h"
#include "support/eventually.h"
#include "support/platform.h"

namespace fs = std::filesystem;

TEST(UpdateManifestText, TakesTextsAndNothingElse) {
    const std::string invalid = "The update manifest is not valid JSON.";
    const std::string missing = "The update manifest is missing its version or url field.";
    const std::string deep(200000, '[');
    std::vector<std::pair<std::string, std::string>> cases = {
        {"{}", missing},
        {R"({"version":"1","url":null})", missing},
        {R"({"version":"","url":"u"})", missing},
        {R"({"version":"","version":"1","url":"u"})", missing}, // of duplicates the first counts
        {R"({"version":"1","url":"u","x":)" + deep + std::string(deep.size(), ']') + "}", ""},
        {R"({"version":"1","url":"u","sha256":7,"encryption":"k"})", ""},
        {"\xEF\xBB\xBF {\"version\":\"1\",\"url\":\"u\",\"encryption\":{\"key\":[]}} \n", ""},
    };
    for (const std::string& rest : {std::string(), std::string("} x"), std::string(",}"), std::string("}\0", 2),
                                    std::string(",\"n\":NaN}"), std::string("}{}"), std::string(",'n':1}")})
        cases.emplace_back(R"({"version":"1","url":"u")" + rest, invalid);
    for (const std::string& text : {std::string(), std::string("[]"), std::string("\"text\""), deep, "{\"a\":" + deep,
                                    std::string("\xEF\xBB\xBF\xEF\xBB\xBF{}")})
        cases.emplace_back(text, invalid);
    for (const auto& [body, failure] : cases) {
        UpdateManifest manifest;
        std::string text;
        EXPECT_EQ(parseUpdateManifest(body, manifest, text), failure.empty()) << body.substr(0, 80);
        EXPECT_EQ(text, failure) << body.substr(0, 80);
        const std::string fields = manifest.version + manifest.url + manifest.sha256 + manifest.encryptionKey;
        EXPECT_TRUE(!failure.empty() || fields == "1u") << fields;
    }
    UpdateManifest manifest;
    std::string text;
    ASSERT_TRUE(parseUpdateManifest(
        R"({"x":{"version":"0"},"version":"1\u0000b","url":"u","url":"w","sha256":"s","plaintext_sha256":"p",)"
        R"("encryption":{"key":"k","key":"l"}})",
        manifest, text));
    EXPECT_EQ(manifest.version, std::string("1\0b", 3));
    EXPECT_EQ(manifest.url + manifest.sha256 + manifest.plaintextSha256 + manifest.encryptionKey, "uspk");
}

TEST(UpdateManifestText, MakesAFileNameOfAnyVersionByteByByte) {
    EXPECT_EQ(sanitizeVersion("1.2.0+build/7"), "1.2.0_build_7");
    for (int byte = 0; byte < 256; ++byte) {
        const std::string text(1, static_cast<char>(byte));
        const bool kept = byte < 128 && (std::isalnum(byte) || byte == '-' || byte == '.');
        EXPECT_EQ(sanitizeVersion(text), kept ? text : "_") << byte;
    }
}

// What the manifest's server says, and what the launcher says then, with and without an editor at hand.
TEST(UpdateCheck, SaysWhatBecameOfTheManifest) {
    const auto writes = [](const std::string& bytes) { return [bytes](TlsConnection& c) { c.write(bytes); }; };
    const auto http = [](const std::string& status) {
        return "The update server returned HTTP " + status + " for the manifest.";
    };
    const std::string unreachable = "Could not reach the update server, and no local editor was found.";
    const std::string offline = "Installed (offline mode)";
    const std::string invalid = "The update manifest is not valid JSON.";
    const std::string half = "\r\n{\"version\":\"1.0\"";
    const struct {
        const char* what;
        InstallWorld::Answer answer;
        std::string alone, beside;
    } cases[] = {
        {"reset", [](TlsConnection& c) { c.reset(); }, unreachable, offline},
        {"cut", writes("HTTP/1.1 200 OK\r\nContent-Length: 99\r\n" + half), unreachable, offline},
        {"cut, no length", writes("HTTP/1.1 200 OK\r\n" + half), invalid, invalid},
        {"404", writes(httpAnswer(404, "{}")), http("404"), http("404")},
        {"302", writes("HTTP/1.1 302 x\r\nLocation: /package\r\nContent-Length: 0\r\n\r\n"), http("302"), http("302")},
        {"204", writes("HTTP/1.1 204 x\r\n\r\n"), http("204"), http("204")},
    };
    for (const bool editor : {false, true}) {
        for (const auto& c : cases) {
            InstallWorld world;
            world.serve("/manifest", c.answer);
            if (editor) world.installOldEditor();
            const Tree before = treeOf(world.folder.path());
            const Outcome outcome = world.run();
            const std::string message = editor ? c.beside : c.alone;
            const auto status =
                message == offline ? EditorInstallStatus::InstalledOffline : EditorInstallStatus::Failed;
            EXPECT_EQ(outcome, (Outcome{status, message, {}})) << c.what;
            EXPECT_EQ(treeOf(world.folder.path()), before) << c.what; // this stage leaves nothing on disk
        }
    }
}

TEST(UpdateCheck, AnUnusableManifestAddressNeedsNoServer) {
    const std::string unconfigured = "Update server not configured. Please locate or install VOLO Editor.";
    const struct {
        std::string url;
        bool editor;
        Outcome outcome;
    } cases[] = {
        {"", false, {EditorInstallStatus::Idle, unconfigured, {}}},
        {"", true, {EditorInstallStatus::InstalledOffline, "Installed (offline mode)", {}}},
        {"/manifest?a=YOUR_SERVER", false, {EditorInstallStatus::Idle, unconfigured, {}}},
        {"http:", true, failed("The update manifest URL must be a valid https:// URL.", {})},
    };
    for (const auto& c : cases) {
        InstallWorld world;
        if (c.editor) world.installOldEditor();
        world.manifestUrl = c.url.starts_with('/') ? world.url(c.url) : c.url;
        EXPECT_EQ(world.run(), c.outcome) << c.url;
        EXPECT_TRUE(world.requestedPaths().empty());
        EXPECT_FALSE(fs::exists(world.downloads));
    }
}

TEST(UpdateCheck, ComparesVersionsByteForByteAndThePackageAddressFirst) {
    const std::string package = makeZip({{"editor.exe", "new"}});
    InstallWorld world;
    world.installOldEditor();
    world.serve("/manifest", R"({"version":"1.0","url":"http://plain/package"})");
    EXPECT_EQ(world.run().message, "The package URL in the update manifest must be a valid https:// URL.");
    world.release("1.0", package);
    EXPECT_EQ(world.run(), installed("1.0", 0));
    EXPECT_TRUE(world.oldEditorIsUntouched());

    // The marker alone is no editor, and an editor without marker is of no version.
    fs::remove(world.editor / "editor.exe");
    EXPECT_EQ(world.run(), installed("1.0", 1));
    fs::remove(world.editor / ".zantor_editor_version");
    EXPECT_EQ(world.run(), installed("1.0", 1));
    EXPECT_EQ(readFileBytes(world.editor / ".zantor_editor_version"), asTextFile("1.0\n"));
    world.release("0.9 ", package); // an older one, with a blank that the marker's reader would cut off
    EXPECT_EQ(world.run(), installed("0.9 ", 2));
    EXPECT_EQ(readFileBytes(world.editor / ".zantor_editor_version"), asTextFile("0.9 \n"));
}

TEST(InstallState, ASecondStartWhileBusyStartsNothing) {
    InstallWorld world;
    world.serve("/manifest", [](TlsConnection& c) { c.pause(300), c.write(httpAnswer(404, "")); });
    world.state().startUpdate();
    world.state().startUpdate();
    EXPECT_EQ(world.finish().status, EditorInstallStatus::Failed);
    EXPECT_EQ(world.requestedPaths().size(), 1u);
}

// A frame asks joinIfFinished once; a retry may come between the worker's last word and its end.
TEST(InstallState, ARetryRightAfterAFailureDoesNotHoldTheFrameUntilItEnds) {
    InstallWorld world;
    std::atomic<int> asked{0};
    world.serve("/manifest", [&](TlsConnection& c) {
        if (++asked > 1) c.pause(2000);
        c.write(httpAnswer(404, ""));
    });
    world.state().startUpdate();
    ASSERT_TRUE(eventually([&] { return world.state().status() == EditorInstallStatus::Failed; }));
    world.state().startUpdate();
    const auto start = std::chrono::steady_clock::now();
    world.state().joinIfFinished();
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
    EXPECT_EQ(world.state().status(), EditorInstallStatus::Checking);
    world.finish();
}
