#pragma once

// The published directory of one platform: static files that any web server or object store can serve. Blocking; any
// thread.
//
//   manifest.json                       the offered release; replaced in one step, after the package and the statement
//   editor-<version>-<hash>.zip         a package as a plain archive; never changes after it is written
//   editor-<version>-<hash>.container   a package sealed in a container; never changes after it is written
//   statements/<sha256>.txt             the release statement of the package file with this hash

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "install/release_statement.h"
#include "install/update_manifest.h"
#include "publish/keys.h"
#include "system/file_lock.h"

namespace site {
inline constexpr std::string_view kManifestName = "manifest.json";
inline constexpr std::string_view kLockName = "lock.tmp"; // locked while a run changes the directory
inline constexpr std::string_view kStatementsName = "statements";
inline constexpr std::string_view kPlatformMember = "platform"; // member of the manifest; launchers ignore it
inline constexpr int kDefaultDays = 30;                         // lifetime of a statement
inline constexpr int kMaxDays = static_cast<int>(statement::kMaxLifetimeSeconds / statement::kDaySeconds);
} // namespace site

[[nodiscard]] std::string joinPath(const std::string& directory, std::string_view name);
[[nodiscard]] std::string statementPath(const std::string& siteDirectory, const std::string& sha256);

// Reads a whole file. False if it cannot be read or is longer than `maxBytes`.
[[nodiscard]] bool readSmallFile(const std::string& path, std::size_t maxBytes, std::string& text);

// Returns a new random name for a temporary file next to `path`.
[[nodiscard]] std::string temporaryName(const std::string& path);

// Lets all users read a file or folder, so that a web server can read it even if the umask forbids that.
void makeReadable(const std::string& path);

// Creates a readable folder and its missing parents. Ignores failures, because the first write to the folder then
// fails.
void makeReadableFolders(const std::string& path);

// Prevents other runs from changing the directory while `lock` exists. Removes the temporary files of killed runs.
// Continues without a lock if the file system has no locks. If another run holds the lock, returns false and sets
// `failureText` to a message for the user.
[[nodiscard]] bool lockSite(const std::string& siteDirectory, FileLock& lock, std::string& failureText);

// Writes a file, or replaces it in one step. On failure returns false, sets `failureText` to a message for the user,
// and keeps the old file.
[[nodiscard]] bool replaceFile(const std::string& path, const std::string& text, std::string& failureText);

// A manifest and the platform that it names. `platform` is empty if the manifest names none.
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
    // Returns the hash of the zip archive, even if the archive is sealed in a container.
    [[nodiscard]] const std::string& archiveSha256() const;
    [[nodiscard]] bool isWithdrawn() const { return field(statement::Status) != statement::kStatusOk; }
    [[nodiscard]] std::string label() const; // version and first digits of the hash, for messages
};
[[nodiscard]] bool parseStatementText(const std::string& path, const std::string& text, PublishedStatement& found,
                                      std::string& failureText);

// Reads all statements of a site, sorted by version. If the statements' folder does not exist, there are none. False if
// a file in this folder is not a valid statement.
[[nodiscard]] bool readStatements(const std::string& siteDirectory, std::vector<PublishedStatement>& statements,
                                  std::string& failureText);

// True if no private key file is inside the published directory. Otherwise sets `failureText`.
[[nodiscard]] bool keysLieOutside(const std::string& siteDirectory, const std::vector<PublisherKey>& keys,
                                  std::string& failureText);

[[nodiscard]] std::string utcDate(std::int64_t seconds); // such as "2026-11-21"
