#include "install/artifact_authenticity.h"

#include <filesystem>
#include <system_error>

#include "crypto/sha256.h"
#include "install/release_statement.h"
#include "system/http.h"
#include "system/operating_system.h"
#include "system/url.h"

bool verifyArtifactAuthenticity(const ArtifactAuthenticity& pinned, const std::string& version,
                                const std::string& packagePath, const std::string& decryptedPath,
                                const UpdateCancellation& stop, std::string& failureText,
                                const PackageDigests& digests) {
    const auto digestOf = [&](const std::string& known, const std::string& path) {
        return known.empty() ? sha256OfFile(path, &stop.closing) : known;
    };
    const auto fail = [&](const std::string& text) {
        failureText = text;
        return false;
    };
    if (pinned.url.empty() && pinned.keys.empty()) return true;
    const std::vector<std::string> keys = parsePublisherKeys(pinned.keys);
    if (pinned.url.empty() || keys.empty())
        return fail("the publisher key in the launcher configuration is not usable.");

    // Take size and hashes from the files and not from the manifest, because the update server is not trusted.
    PackageIdentity package;
    package.version = version;
    std::error_code error;
    package.size = static_cast<std::int64_t>(std::filesystem::file_size(packagePath, error));
    package.sha256 = digestOf(digests.package, packagePath);
    package.plaintextSha256 =
        decryptedPath.empty() ? std::string(statement::kNoPlaintext) : digestOf(digests.plaintext, decryptedPath);

    HttpsServer server;
    std::string path;
    HttpsAnswer answer;
    server.readTimeoutSeconds = 30;
    server.abort = stop.requests;
    // Avoid "//" in the path: object stores return 404 for it.
    const std::string base = pinned.url.ends_with('/') ? pinned.url.substr(0, pinned.url.size() - 1) : pinned.url;
    const std::string url = base + "/" + package.sha256 + std::string(statement::kFileExtension);
    if (parseHttpsUrl(url, server.host, server.port, path)) answer = httpsGet(server, path, {}, statement::kMaxBytes);
    if (!answer.answered) return fail("the authenticity service could not be reached.");
    if (answer.status != 200) return fail("no release statement is published for this package.");
    failureText = judgeReleaseStatement(answer.body, keys, package, currentTimeSeconds());
    return failureText.empty();
}
