#pragma once

// The published directory of one platform: static files that any web server or object store can serve. Blocking; any
// thread.
//
//   manifest.json                       the release on offer; replaced in one step, after the files it names
//   editor-<version>-<hash>.zip         a package as a plain archive, or
//   editor-<version>-<hash>.container   sealed in a container; neither changes once it is written
//   statements/<sha256>.txt             the release statement of the package file with that hash

#include <cstddef>
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
inline constexpr std::string_view kPlatformMember = "platform"; // in the manifest; launchers ignore it
inline constexpr int kDefaultDays = 30;                         // that a statement holds
inline constexpr int kMaxDays = static_cast<int>(statement::kMaxLifetimeSeconds / statement::kDaySeconds);
inline constexpr std::int64_t kWarningDays = 10; // before a statement's end
} // namespace site

[[nodiscard]] std::string joinPath(const std::string& directory, std::string_view name);
[[nodiscard]] std::string statementPath(const std::string& siteDirectory, const std::string& sha256);

// Reads a whole file. False when it cannot be read or is longer than `maxBytes`.
[[nodiscard]] bool readSmallFile(const std::string& path, std::size_t maxBytes, std::string& text);

// Writes a file, or replaces it in one step. Returns false with a message for the user; the old file then stays.
[[nodiscard]] bool replaceFile(const std::string& path, const std::string& text, std::string& failureText);

// A manifest with its platform; the platform is empty when the manifest names none.
struct PublishedManifest {
    UpdateManifest manifest;
    std::string platform;
};
[[nodiscard]] bool readManifest(const std::string& path, PublishedManifest& published, std::string& failureText);

struct PublishedStatement {
    std::string path;
    ReleaseStatement release;
    StatementNumbers numbers;

    [[nodiscard]] const std::string& field(statement::Field name) const { return release.fields[name]; }
    // The hash of the zip archive, sealed or not.
    [[nodiscard]] const std::string& archiveSha256() const;
    [[nodiscard]] bool isWithdrawn() const { return field(statement::Status) != statement::kStatusOk; }
    [[nodiscard]] std::string label() const; // version and the beginning of the hash, for messages
};
[[nodiscard]] bool parseStatementText(const std::string& path, const std::string& text, PublishedStatement& found,
                                      std::string& failureText);

// Reads all statements of a site, ordered by version; none when the folder does not exist. False when a file is not a
// statement.
[[nodiscard]] bool readStatements(const std::string& siteDirectory, std::vector<PublishedStatement>& statements,
                                  std::string& failureText);

// Refuses a private key whose file is inside the published directory.
[[nodiscard]] bool keysLieOutside(const std::string& siteDirectory, const std::vector<PublisherKey>& keys,
                                  std::string& failureText);

[[nodiscard]] std::string utcDate(std::int64_t seconds); // "2026-11-21"

// A warning when the statement ends within kWarningDays; otherwise empty.
[[nodiscard]] std::string expiryWarning(const PublishedStatement& published, std::int64_t nowSeconds);
