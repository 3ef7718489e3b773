#pragma once

// The published directory of one platform: static files that any web server or object store can serve.
//
//   manifest.json                       what is offered now; replaced in one step, after all it speaks of
//   editor-<version>-<hash>.zip         a package as a plain archive, or
//   editor-<version>-<hash>.container   sealed; never changed once written
//   statements/<sha256>.txt             the release statement of the package file with that hash

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "install/release_statement.h"
#include "install/update_manifest.h"
#include "publish/keys.h"

namespace site {
inline constexpr std::string_view kManifestName = "manifest.json";
inline constexpr std::string_view kStatementsName = "statements";
inline constexpr std::string_view kPlatformMember = "platform"; // in the manifest; for publishers, launchers ignore it
inline constexpr int kDefaultDays = 30;
inline constexpr int kMaxDays = static_cast<int>(statement::kMaxLifetimeSeconds / statement::kDaySeconds);
inline constexpr std::int64_t kWarningDays = 10; // before a statement's end
} // namespace site

std::string joinPath(const std::string& directory, std::string_view name);
std::string statementPath(const std::string& siteDirectory, const std::string& sha256);

// A small file as text. False when it cannot be read or is longer than `maxBytes`.
[[nodiscard]] bool readSmallFile(const std::string& path, std::size_t maxBytes, std::string& text);

// Puts a whole file in its place in one step. False leaves words for the user, and nothing has changed.
[[nodiscard]] bool replaceFile(const std::string& path, const std::string& text, std::string& failureText);

// The manifest of a file, with its platform where it names one.
struct PublishedManifest {
    UpdateManifest manifest;
    std::string platform;
};
[[nodiscard]] bool readManifest(const std::string& path, PublishedManifest& published, std::string& failureText);

struct PublishedStatement {
    std::string path;
    ReleaseStatement release;
    StatementNumbers numbers;

    const std::string& field(statement::Field name) const { return release.fields[name]; }
    // The hash of what the publisher packed, sealed or not.
    const std::string& archiveSha256() const;
    bool isWithdrawn() const { return field(statement::Status) != statement::kStatusOk; }
    std::string label() const; // version and the beginning of its hash, for messages
};
[[nodiscard]] bool parseStatementText(const std::string& path, const std::string& text, PublishedStatement& found,
                                      std::string& failureText);

// All statements of a site, by version. None where there is no such folder; false when one of them is none.
[[nodiscard]] bool readStatements(const std::string& siteDirectory, std::vector<PublishedStatement>& statements,
                                  std::string& failureText);

// Refuses a private key that lies where it would be published.
[[nodiscard]] bool keysLieOutside(const std::string& siteDirectory, const std::vector<PublisherKey>& keys,
                                  std::string& failureText);

std::string utcDate(std::int64_t seconds); // "2026-11-21"

// Words about the end of a statement that is near, or empty.
std::string expiryWarning(const PublishedStatement& published, std::int64_t nowSeconds);
