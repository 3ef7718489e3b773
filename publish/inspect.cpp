#include "publish/inspect.h"

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <vector>

#include "crypto/sha256.h"
#include "install/package_container.h"
#include "publish/site.h"
#include "publish/statement_expiry.h"
#include "publish/zip_check.h"
#include "system/url.h"

namespace fs = std::filesystem;

namespace {

class Inspection {
  public:
    Inspection(const InspectRequest& request, StatementReport& report, std::string& failureText)
        : request_(request)
        , report_(report)
        , failureText_(failureText) {}

    bool run() {
        keys_ = parsePublisherKeys(request_.keys);
        if (keys_.empty() && !request_.keys.empty()) return fail("--keys takes one to four public keys in base64.");
        std::error_code error;
        if (!fs::exists(request_.path, error)) return fail(request_.path + " does not exist.");
        if (!fs::is_regular_file(request_.path, error)) return fail(request_.path + " is not a file.");
        const std::string start = firstBytes();
        if (start.starts_with(container::kMagic) || start.starts_with("PK")) return inspectPackage();
        if (start.starts_with(statement::kFirstLine)) return inspectStatement(request_.path);
        if (start.find_first_of('{') != std::string::npos) return inspectManifest();
        return fail(request_.path + " is neither a package nor a container, a manifest or a statement.");
    }

  private:
    bool fail(const std::string& text) {
        failureText_ = text;
        return false;
    }
    void say(const std::string& line) { report_.lines.push_back(line); }

    [[nodiscard]] std::string firstBytes() const {
        std::ifstream file(request_.path, std::ios::binary);
        std::string bytes(statement::kFirstLine.size(), '\0');
        file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        bytes.resize(static_cast<std::size_t>(file.gcount()));
        return bytes;
    }

    bool inspectPackage() {
        const std::string sha256 = sha256OfFile(request_.path);
        if (sha256.empty()) return fail(request_.path + " cannot be read to its end.");
        const std::string beside = (fs::path(request_.path).parent_path() / site::kManifestName).string();
        const bool named = !request_.manifestPath.empty();
        PublishedManifest published;
        std::error_code error;
        bool known = named || fs::exists(beside, error);
        if (known && !readManifest(named ? request_.manifestPath : beside, published, failureText_)) return false;
        if (known && published.manifest.sha256 != sha256) {
            if (named) return fail(request_.manifestPath + " is for another package.");
            known = false;
        }
        PackageIdentity found;
        found.version = known ? published.manifest.version : std::string();
        found.size = static_cast<std::int64_t>(fs::file_size(request_.path, error));
        found.sha256 = sha256;
        return inspectPackageFile(request_.path, sha256, known ? &published : nullptr, found.plaintextSha256) &&
               inspectStatementOf(found, fs::path(request_.path).parent_path().string(), false);
    }

    // Checks a package or container and sets `plaintextSha256` to the hash of a container's contents. Without a
    // manifest there is no key, so a container's contents are not checked.
    bool inspectPackageFile(const std::string& path, const std::string& sha256, const PublishedManifest* published,
                            std::string& plaintextSha256) {
        const bool sealed = isEncryptedPackage(path);
        say(path + ": " + (sealed ? "an encrypted container" : "a plain zip archive"));
        say("  sha256: " + sha256);
        if (published) say("  version: " + published->manifest.version + " (from the manifest)");
        if (!sealed) return inspectArchive(path, published);
        std::uint64_t payloadSize = 0;
        if (!readContainerSize(path, payloadSize, failureText_)) return fail(path + ": " + failureText_);
        say("  holds: " + std::to_string(payloadSize) + " bytes");
        if (!published) {
            say("  its contents are not checked: that needs the key in its manifest (--manifest)");
            return true;
        }
        Sha256 digest;
        const auto hash = [&](const unsigned char* bytes, std::size_t count) { digest.update(bytes, count); };
        if (!decryptPackageTo(hash, path, published->manifest.encryptionKey, failureText_))
            return fail(path + ": " + failureText_);
        plaintextSha256 = digest.finish();
        if (!published->manifest.plaintextSha256.empty() && published->manifest.plaintextSha256 != plaintextSha256)
            return fail(path + ": its contents do not match plaintext_sha256 in the manifest.");
        say("  its tag is good; sha256 of its contents: " + plaintextSha256);
        return true;
    }

    bool inspectArchive(const std::string& path, const PublishedManifest* published) {
        PackagePlatform platform = PackagePlatform::Linux;
        if (published && !published->platform.empty() && !parsePackagePlatform(published->platform, platform))
            return fail("The manifest names an unknown platform.");
        ArchiveSummary summary;
        if (!checkArchive(path, platform, summary, failureText_)) return false;
        say("  " + std::to_string(summary.files) + " files, " + std::to_string(summary.unpackedBytes) +
            " bytes unpacked; every file unpacks");
        report_.warnings.insert(report_.warnings.end(), summary.warnings.begin(), summary.warnings.end());
        return true;
    }

    bool loadStatement(const std::string& path, std::string& text, PublishedStatement& published) {
        if (!readSmallFile(path, statement::kMaxBytes, text))
            return fail(path + " cannot be read, or is larger than a statement may be (4,096 bytes).");
        return parseStatementText(path, text, published, failureText_);
    }

    bool inspectStatement(const std::string& path) {
        std::string text;
        PublishedStatement published;
        if (!loadStatement(path, text, published)) return false;
        say(path + ": a release statement");
        for (std::size_t field = 0; field < statement::kFieldCount; ++field) {
            std::string line =
                "  " + std::string(statement::kFieldNames[field]) + ": " + published.release.fields[field];
            if (field == statement::NotBefore) line += " (" + utcDate(published.numbers.notBefore) + ")";
            if (field == statement::NotAfter) line += " (" + utcDate(published.numbers.notAfter) + ")";
            say(line);
        }
        // Check the statement as the launcher does, for the package that the statement describes.
        const PackageIdentity itself{published.field(statement::Version), published.numbers.size,
                                     published.field(statement::Sha256), published.field(statement::PlaintextSha256)};
        return judge(path, text, published, itself);
    }

    // Checks a statement for `package`. Does not check the signatures if no keys are given.
    bool judge(const std::string& path, const std::string& text, const PublishedStatement& published,
               const PackageIdentity& package) {
        if (keys_.empty()) {
            say("  signatures: " + std::to_string(published.release.signatures.size()) +
                ", not checked (--keys checks them)");
            return inTime(path, published);
        }
        const std::string verdict = judgeReleaseStatement(text, keys_, package, request_.nowSeconds);
        if (!verdict.empty()) return fail(path + ": " + verdict);
        say("  signed by one of the given keys");
        return inTime(path, published);
    }

    bool inTime(const std::string& path, const PublishedStatement& published) {
        if (published.isWithdrawn()) return fail(path + ": the publisher has withdrawn this release.");
        if (request_.nowSeconds > published.numbers.notAfter) return fail(path + ": it has expired.");
        const std::string warning = expiryWarning(published, request_.nowSeconds);
        if (!warning.empty()) report_.warnings.push_back(warning);
        return true;
    }

    bool inspectManifest() {
        PublishedManifest published;
        if (!readManifest(request_.path, published, failureText_)) return false;
        const UpdateManifest& manifest = published.manifest;
        std::string host;
        std::string urlPath;
        int port = 0;
        say(request_.path + ": an update manifest");
        say("  version: " + manifest.version);
        say("  url: " + manifest.url);
        if (!parseHttpsUrl(manifest.url, host, port, urlPath))
            return fail(request_.path + ": the package URL is not a valid https:// URL.");
        if (manifest.sha256.empty())
            report_.warnings.emplace_back("The manifest has no sha256: launchers do not verify the package.");
        const fs::path directory = fs::path(request_.path).parent_path();
        const std::string package = (directory / fs::path(urlPath).filename()).string();
        std::error_code error;
        if (!fs::is_regular_file(package, error)) {
            say("  its package is not in this folder and is not checked");
            return true;
        }
        PackageIdentity found;
        found.version = manifest.version;
        found.size = static_cast<std::int64_t>(fs::file_size(package, error));
        found.sha256 = sha256OfFile(package);
        if (!manifest.sha256.empty() && found.sha256 != manifest.sha256)
            return fail(package + " does not match sha256 in the manifest.");
        if (!inspectPackageFile(package, found.sha256, &published, found.plaintextSha256)) return false;
        if (found.plaintextSha256.empty()) found.plaintextSha256 = statement::kNoPlaintext;
        return inspectStatementOf(found, directory.string(), true);
    }

    // Checks the statement of a package. What is not known of the package is not compared.
    bool inspectStatementOf(PackageIdentity package, const std::string& directory, bool expected) {
        const std::string path = statementPath(directory, package.sha256);
        std::error_code error;
        if (!fs::exists(path, error)) {
            if (!expected) return true;
            if (!keys_.empty()) return fail("No release statement is published for this package.");
            report_.warnings.emplace_back("No release statement of this package is in the folder of the manifest.");
            return true;
        }
        std::string text;
        PublishedStatement published;
        if (!loadStatement(path, text, published)) return false;
        say(path + ": the statement of this package, until " + utcDate(published.numbers.notAfter));
        if (package.version.empty()) package.version = published.field(statement::Version);
        if (package.plaintextSha256.empty()) package.plaintextSha256 = published.field(statement::PlaintextSha256);
        return judge(path, text, published, package);
    }

    const InspectRequest& request_;
    StatementReport& report_;
    std::string& failureText_;
    std::vector<std::string> keys_;
};

} // namespace

bool inspectFile(const InspectRequest& request, StatementReport& report, std::string& failureText) {
    return Inspection(request, report, failureText).run();
}
