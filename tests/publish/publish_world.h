#pragma once

// A publisher's workplace: an archive, two keys, a directory to publish, and a fixed time.

#include <cstdint>
#include <filesystem>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "publish/keys.h"
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
    const std::string archive = makeZip({{"editor.exe", "editor"}, {"data/text", std::string(70000, 't'), true}});
    ReleaseRequest request;
    ReleaseResult result;
    std::string failure;

    PublishWorld() {
        request.zipPath = folder.write("editor.zip", archive).string();
        request.version = "1.4.2";
        request.platform = "linux";
        request.baseUrl = "https://updates.example/linux";
        request.siteDirectory = site;
        request.nowSeconds = kNow;
        std::string ignored;
        for (const char* name : {"first", "second"})
            if (!makeKeyFile(keyFile(name), false, ignored, failure)) throw std::runtime_error(failure);
    }

    std::string keyFile(const std::string& name) const { return (folder / (name + ".key")).string(); }

    std::vector<PublisherKey> keys(const std::vector<std::string>& names = {"first"}) const {
        std::vector<PublisherKey> read;
        std::vector<std::string> warnings;
        std::string why;
        for (const std::string& name : names)
            if (!read.emplace_back().read(keyFile(name), warnings, why)) throw std::runtime_error(why);
        return read;
    }
    std::string publicKey(const std::string& name) const { return keys({name}).front().publicKey(); }

    // The failure text, or empty.
    std::string publish() {
        failure.clear();
        result = {};
        const bool done = publishRelease(request, keys(), result, failure);
        return done ? "" : failure.empty() ? "(no text)" : failure;
    }
    std::string publishBytes(const std::string& bytes) {
        folder.write("editor.zip", bytes);
        return publish();
    }

    // Every file below the site, with its bytes.
    std::map<std::string, std::string> files() const {
        std::map<std::string, std::string> found;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(site))
            if (entry.is_regular_file())
                found[std::filesystem::relative(entry.path(), site).generic_string()] = readFileBytes(entry.path());
        return found;
    }

    UpdateManifest manifest() const {
        PublishedManifest published;
        std::string why;
        if (!readManifest((folder / "site/manifest.json").string(), published, why)) throw std::runtime_error(why);
        return published.manifest;
    }

    // The launcher's verdict on the statement of a package with one pinned key; empty when it accepts.
    std::string verdict(const std::string& sha256, const std::string& keyName = "first",
                        std::int64_t now = kNow) const {
        const std::string text = readFileBytes(statementPath(site, sha256));
        ReleaseStatement release;
        if (!parseReleaseStatement(text, release)) return "malformed";
        const auto& field = release.fields;
        return judgeReleaseStatement(
            text, {publicKey(keyName)},
            {field[statement::Version], std::stoll(field[statement::Size]), sha256, field[statement::PlaintextSha256]},
            now);
    }
};
