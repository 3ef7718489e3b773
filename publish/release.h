#pragma once

// Publishes one release: from a zip archive to a directory of static files (publish/site.h).

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
    std::string baseUrl;       // https address that the site directory is served at
    std::string siteDirectory; // made where it does not exist
    bool encrypt = true;
    bool force = false;
    int days = site::kDefaultDays; // that the statement holds
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
    bool packageKept = false; // it was published already
    ArchiveSummary archive;
};

// Checks the archive and writes package, statement and manifest, in this order and each in one step: whoever reads the
// directory meanwhile sees the old release or the new one, whole. A release that is offered already gets a new
// statement and nothing else. Without `force` a version that was published with other bytes, or was withdrawn, is
// refused, and so are a plain archive that is published as another version and a directory that is another platform's.
// On false there are words for the user in `failureText`, what was offered is offered still, and no file of the failed
// attempt is left.
[[nodiscard]] bool publishRelease(const ReleaseRequest& request, const std::vector<PublisherKey>& keys,
                                  ReleaseResult& result, std::string& failureText);

// What is wrong with a version: one that the launcher could not tell from what its marker file gives back. Or empty.
std::string versionProblem(const std::string& version);

// What is wrong with an address as the base of launcher addresses. Or empty.
std::string baseUrlProblem(const std::string& url);
