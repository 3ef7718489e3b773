#include "publish/inspect.h"

#include <filesystem>
#include <fstream>
#include <system_error>

#include "crypto/sha256.h"
#include "install/package_container.h"
#include "publish/site.h"
#include "publish/zip_check.h"
#include "system/http.h"

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
        if (keys_.empty() && !request_.keys.empty())
            return fail("The public keys given are not one to four keys in base64.");
        std::error_code error;
        if (!fs::is_regular_file(request_.path, error)) return fail(request_.path + " is no file.");
        const std::string start = firstBytes();
        if (start.starts_with(container::kMagic) || start.starts_with("PK")) return inspectPackage();
        if (start.starts_with(statement::kFirstLine)) return inspectStatement(request_.path);
        if (start.find_first_of('{') != std::string::npos) return inspectManifest();
        return fail(request_.path + " is neither a package, nor a container, a manifest or a statement.");
    }

  private:
    bool fail(const std::string& text) {
        failureText_ = text;
        return false;
    }
    void say(const std::string& line) { report_.lines.push_back(line); }

    std::string firstBytes() const {
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
        std::string plaintextSha256;
        return inspectPackageFile(request_.path, sha256, known ? &published : nullptr, plaintextSha256);
    }

    // `plaintextSha256` gets the hash of what a container holds. Without a manifest there is no key for it.
    bool inspectPackageFile(const std::string& path, const std::string& sha256, const PublishedManifest* published,
                            std::string& plaintextSha256) {
        const bool sealed = isEncryptedPackage(path);
        say(path + ": " + (sealed ? "an encrypted container" : "a plain zip archive"));
        say("  sha256: " + sha256);
        if (published) say("  version: " + published->manifest.version + ", as its manifest says");
        if (!sealed) return inspectArchive(path, published);
        std::uint64_t payloadSize = 0;
        if (!readContainerSize(path, payloadSize, failureText_)) return fail(path + ": " + failureText_);
        say("  holds: " + std::to_string(payloadSize) + " bytes");
        if (!published) {
            say("  its contents cannot be checked without its manifest (--manifest)");
            return true;
        }
        Sha256 digest;
        const auto hash = [&](const unsigned char* bytes, std::size_t count) { digest.update(bytes, count); };
        if (!decryptPackageTo(hash, path, published->manifest.encryptionKey, failureText_))
            return fail(path + ": " + failureText_);
        plaintextSha256 = digest.finish();
        if (!published->manifest.plaintextSha256.empty() && published->manifest.plaintextSha256 != plaintextSha256)
            return fail(path + ": what it holds has another hash than its manifest says.");
        say("  its tag is good; plaintext-sha256: " + plaintextSha256);
        return true;
    }

    bool inspectArchive(const std::string& path, const PublishedManifest* published) {
        PackagePlatform platform = PackagePlatform::Linux;
        if (published && !published->platform.empty() && !parsePackagePlatform(published->platform, platform))
            return fail("The manifest names an unknown platform.");
        ArchiveSummary summary;
        if (!checkArchive(path, platform, summary, failureText_)) return false;
        say("  " + std::to_string(summary.files) + " files, " + std::to_string(summary.unpackedBytes) +
            " bytes unpacked; every one unpacks");
        report_.warnings.insert(report_.warnings.end(), summary.warnings.begin(), summary.warnings.end());
        return true;
    }

    bool loadStatement(const std::string& path, std::string& text, PublishedStatement& published) {
        if (!readSmallFile(path, statement::kMaxBytes, text))
            return fail(path + " cannot be read, or is larger than a statement may be.");
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
        // The launcher's own judgement, of the package that the statement itself speaks of.
        const PackageIdentity itself{published.field(statement::Version), published.numbers.size,
                                     published.field(statement::Sha256), published.field(statement::PlaintextSha256)};
        return judge(path, text, published, itself);
    }

    // Without keys to hold it against, everything but the signature.
    bool judge(const std::string& path, const std::string& text, const PublishedStatement& published,
               const PackageIdentity& package) {
        if (keys_.empty()) {
            say("  signatures: " + std::to_string(published.release.signatures.size()) +
                ", not checked (--keys checks them)");
            return inTime(path, published);
        }
        const std::string verdict = judgeReleaseStatement(text, keys_, package, request_.nowSeconds);
        if (!verdict.empty()) return fail(path + ": " + verdict);
        say("  signed by a key given");
        return inTime(path, published);
    }

    bool inTime(const std::string& path, const PublishedStatement& published) {
        if (published.isWithdrawn()) return fail(path + ": this release was withdrawn by its publisher.");
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
            return fail(request_.path + ": its package URL must be a valid https:// URL.");
        if (manifest.sha256.empty()) report_.warnings.push_back("The manifest has no sha256: packages go unverified.");
        const fs::path directory = fs::path(request_.path).parent_path();
        const std::string package = (directory / fs::path(urlPath).filename()).string();
        std::error_code error;
        if (!fs::is_regular_file(package, error)) {
            say("  its package does not lie beside it and is not checked");
            return true;
        }
        PackageIdentity found;
        found.version = manifest.version;
        found.size = static_cast<std::int64_t>(fs::file_size(package, error));
        found.sha256 = sha256OfFile(package);
        if (!manifest.sha256.empty() && found.sha256 != manifest.sha256)
            return fail(package + " has another hash than the manifest says.");
        if (!inspectPackageFile(package, found.sha256, &published, found.plaintextSha256)) return false;
        if (found.plaintextSha256.empty()) found.plaintextSha256 = statement::kNoPlaintext;
        return inspectStatementOf(found, directory.string());
    }

    bool inspectStatementOf(const PackageIdentity& package, const std::string& directory) {
        const std::string path = statementPath(directory, package.sha256);
        std::error_code error;
        if (!fs::exists(path, error)) {
            if (!keys_.empty()) return fail("No release statement is published for this package.");
            report_.warnings.push_back("No release statement lies beside the manifest.");
            return true;
        }
        std::string text;
        PublishedStatement published;
        if (!loadStatement(path, text, published)) return false;
        say(path + ": the statement of this package, until " + utcDate(published.numbers.notAfter));
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
