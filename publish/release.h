#pragma once

// Publishes one release: turns a zip archive into static files in a directory (publish/site.h). Blocking; any thread.

#include <cstdint>
#include <string>
#include <vector>

#include "publish/keys.h"
#include "publish/site.h"
#include "publish/zip_check.h"

struct ReleaseRequest {
    std::string zipPath;
    std::string version;
    std::string platform;      // "linux" or "windows"
    std::string baseUrl;       // https address of the published directory
    std::string siteDirectory; // created when missing
    bool encrypt = true;
    bool force = false;
    int days = site::kDefaultDays; // the lifetime of the statement
    std::int64_t nowSeconds = 0;
};

struct ReleaseResult {
    std::string packagePath;
    std::string statementPath;
    std::string manifestPath;
    std::string manifestUrl;     // editor_update_manifest_url
    std::string authenticityUrl; // artifact_authenticity_url
    std::string authenticityKeys;
    std::int64_t notAfter = 0;
    bool packageKept = false; // the package was already published
    ArchiveSummary archive;
};

// Checks the archive, then writes package, statement and manifest, in this order and each in one step: a reader of the
// directory always sees a complete release, the old or the new one. A release that is already on offer only gets a new
// statement. Without `force` these are refused: a version that was published with other bytes or was withdrawn, a plain
// archive that is published as another version, and a directory of another platform.
// Returns false with a message for the user in `failureText`; then the old release is still on offer, and no file of
// the failed attempt is left.
[[nodiscard]] bool publishRelease(const ReleaseRequest& request, const std::vector<PublisherKey>& keys,
                                  ReleaseResult& result, std::string& failureText);

// Why a version is refused, or empty. Launchers read the version back from a marker file, trimmed: such a version must
// come back unchanged.
[[nodiscard]] std::string versionProblem(const std::string& version);

// Why an address is refused as the base of the published addresses, or empty.
[[nodiscard]] std::string baseUrlProblem(const std::string& url);
