#pragma once

// Publishes one release: turns a zip archive into static files in a directory (publish/site.h). Blocking; any thread.

#include <cstdint>
#include <string>
#include <vector>

#include "publish/keys.h"
#include "publish/progress.h"
#include "publish/site.h"
#include "publish/zip_check.h"

struct ReleaseRequest {
    std::string zipPath;
    std::string version;
    std::string platform;      // "linux" or "windows"
    std::string baseUrl;       // https address of the published directory
    std::string siteDirectory; // created if it is missing
    bool encrypt = true;
    bool force = false;
    int days = site::kDefaultDays; // the lifetime of the statement
    std::int64_t nowSeconds = 0;
    Progress progress;
};

struct ReleaseResult {
    std::string packagePath;
    std::string statementPath;
    std::string manifestPath;
    std::string manifestUrl;     // value for editor_update_manifest_url
    std::string authenticityUrl; // value for artifact_authenticity_url
    std::string authenticityKeys;
    std::int64_t notAfter = 0;
    bool packageKept = false; // the package was already published
    ArchiveSummary archive;
};

// Checks the archive, then writes package, statement and manifest in this order. Each file is replaced in one step, so
// that a reader of the directory always sees a complete release, the old or the new one. If the release is already
// offered, only its statement is renewed. Without `force`, refuses a version that was published with other bytes or was
// withdrawn, an unencrypted archive that was published as another version, and a directory of another platform.
// On failure, or while another run changes the directory, returns false and sets `failureText` to a message for the
// user. In this case the old release is still offered, and no file of the failed attempt remains.
[[nodiscard]] bool publishRelease(const ReleaseRequest& request, const std::vector<PublisherKey>& keys,
                                  ReleaseResult& result, std::string& failureText);

// Returns why a version is refused; empty if it is accepted. For example, a version with a blank at its end is refused:
// launchers write the version to a marker file and remove such blanks when they read the file.
[[nodiscard]] std::string versionProblem(const std::string& version);

// Returns why an address is refused as the base of the published addresses; empty if it is accepted.
[[nodiscard]] std::string baseUrlProblem(const std::string& url);
