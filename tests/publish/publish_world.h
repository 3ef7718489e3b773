#pragma once

// Prepares what a publisher needs: an archive, a directory to publish, a fixed time, and keys that are created when a
// test first names them.

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "publish/release.h"
#include "publish/site.h"
#include "support/package_making.h"
#include "support/temporary_folder.h"

inline constexpr std::int64_t kNow = 1795228661;
inline constexpr std::int64_t kDay = 86400;

class PublishWorld {
  public:
    TemporaryFolder folder;
    const std::string site = (folder / "site").string();
    const std::string archive = makeZip({{"editor.exe", "editor"}, {"data/text", std::string(70000, 't')}});
    ReleaseRequest request;
    ReleaseResult result;

    PublishWorld() {
        request.zipPath = folder.write("editor.zip", archive).string();
        request.version = "1.4.2";
        request.platform = "linux";
        request.baseUrl = "https://updates.example/linux";
        request.siteDirectory = site;
        request.nowSeconds = kNow;
    }

    std::vector<PublisherKey> keys(const std::vector<std::string>& names = {"first"}) const {
        return publisherKeys(names, folder);
    }
    [[nodiscard]] std::string publicKey(const std::string& name) const { return keys({name}).front().publicKey(); }

    // Publishes the archive. Returns the failure text; empty on success.
    std::string publish() {
        std::string failure;
        result = {};
        const bool done = publishRelease(request, keys(), result, failure);
        return done ? "" : failure.empty() ? "(no text)" : failure;
    }
    std::string publishBytes(const std::string& bytes) {
        folder.write("editor.zip", bytes);
        return publish();
    }

    [[nodiscard]] UpdateManifest manifest() const {
        PublishedManifest published;
        std::string failure;
        if (!readManifest((folder / "site/manifest.json").string(), published, failure))
            throw std::runtime_error(failure);
        return published.manifest;
    }

    // Returns the verdict of a launcher with one pinned key on the published statement of a package. Empty if the
    // launcher accepts the package.
    std::string verdict(const std::string& sha256, const std::string& keyName = "first",
                        std::int64_t now = kNow) const {
        const std::string path = statementPath(site, sha256);
        const std::string text = readFileBytes(path);
        PublishedStatement found;
        std::string failure;
        if (!parseStatementText(path, text, found, failure)) return failure;
        return judgeReleaseStatement(
            text, {publicKey(keyName)},
            {found.field(statement::Version), found.numbers.size, sha256, found.field(statement::PlaintextSha256)},
            now);
    }
};
