#include "publish/release.h"

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <string_view>
#include <system_error>

#include <rapidjson/prettywriter.h>
#include <rapidjson/stringbuffer.h>

#include "crypto/base64.h"
#include "crypto/random_bytes.h"
#include "crypto/sha256.h"
#include "install/package_container.h"
#include "publish/container_writer.h"
#include "publish/statement_writer.h"
#include "system/url.h"

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kMaxVersionBytes = 128; // launchers use the version in file names

std::string manifestText(const PublishedManifest& published) {
    rapidjson::StringBuffer buffer;
    rapidjson::PrettyWriter<rapidjson::StringBuffer> writer(buffer);
    const auto member = [&](std::string_view name, const std::string& value) {
        writer.Key(name.data(), static_cast<rapidjson::SizeType>(name.size()));
        writer.String(value);
    };
    const UpdateManifest& manifest = published.manifest;
    writer.StartObject();
    member("version", manifest.version);
    member(site::kPlatformMember, published.platform);
    member("url", manifest.url);
    member("sha256", manifest.sha256);
    if (!manifest.encryptionKey.empty()) {
        member("plaintext_sha256", manifest.plaintextSha256);
        writer.Key("encryption");
        writer.StartObject();
        member("key", manifest.encryptionKey);
        writer.EndObject();
    }
    writer.EndObject();
    return std::string(buffer.GetString(), buffer.GetSize()) + "\n";
}

// One attempt to publish. If the attempt fails, the destructor removes the files that it wrote and restores the
// statement that it replaced.
class Publication {
  public:
    Publication(const ReleaseRequest& request, const std::vector<PublisherKey>& keys, ReleaseResult& result,
                std::string& failureText)
        : request_(request)
        , keys_(keys)
        , result_(result)
        , failureText_(failureText) {}
    ~Publication() {
        std::error_code ignored;
        for (const std::string& path : made_)
            fs::remove(path, ignored);
        std::string ignoredText;
        if (!replacedStatement_.empty() && !replaceFile(result_.statementPath, replacedStatement_, ignoredText))
            failureText_ += " " + result_.statementPath + " could not be restored.";
    }
    Publication(const Publication&) = delete;
    Publication& operator=(const Publication&) = delete;

    bool run() {
        if (!checkRequest() || !checkZip()) return false;
        if (!lockSite(request_.siteDirectory, lock_, failureText_) || !lookAtSite() || !checkHistory()) return false;
        if (!keepPackage() && !writePackage()) return false;
        if (!putStatement() || !readBack() || !putManifest()) return false;
        made_.clear();
        replacedStatement_.clear();
        return true;
    }

  private:
    bool fail(const std::string& text) {
        failureText_ = text;
        return false;
    }

    bool checkRequest() {
        baseUrl_ = request_.baseUrl.substr(0, request_.baseUrl.find_last_not_of('/') + 1);
        std::string problem = versionProblem(request_.version);
        if (problem.empty()) problem = baseUrlProblem(baseUrl_);
        if (!problem.empty()) return fail(problem);
        if (!parsePackagePlatform(request_.platform, platform_))
            return fail("The platform is \"linux\" or \"windows\".");
        if (keys_.empty() || keys_.size() > statement::kMaxSignatures) return fail("One to four keys sign a release.");
        return keysLieOutside(request_.siteDirectory, keys_, failureText_);
    }

    bool lookAtSite() {
        result_.manifestPath = joinPath(request_.siteDirectory, site::kManifestName);
        std::error_code error;
        if (fs::exists(result_.manifestPath, error)) {
            hasOffer_ = readManifest(result_.manifestPath, offer_, failureText_);
            if (!hasOffer_ && !request_.force) return false;
            if (!request_.force && !offer_.platform.empty() && offer_.platform != request_.platform)
                return fail(request_.siteDirectory + " is the directory of " + offer_.platform +
                            ". Each platform needs its own directory.");
        }
        return readStatements(request_.siteDirectory, statements_, failureText_);
    }

    bool checkZip() {
        if (!checkArchive(request_.zipPath, platform_, result_.archive, failureText_, request_.progress)) return false;
        zipSha256_ = hashFile(request_.zipPath, "hashing the archive", request_.progress);
        return !zipSha256_.empty() || fail(request_.zipPath + " could not be read to its end.");
    }

    // Refuses a version that was published with other bytes: launchers compare only versions, so they would not install
    // the new bytes. Also refuses an unencrypted archive that was published as another version before: the archive's
    // hash is the name of the statement's file, so both versions would need the same file, and it contains only one
    // version.
    bool checkHistory() {
        if (request_.force) return true;
        for (const PublishedStatement& past : statements_) {
            if (past.field(statement::Version) != request_.version) {
                if (request_.encrypt || past.field(statement::Sha256) != zipSha256_) continue;
                return fail("This archive is already published as version " + past.field(statement::Version) +
                            ". Publish it sealed, or change it (--force replaces that version's statement).");
            }
            if (past.archiveSha256() != zipSha256_)
                return fail("Version " + request_.version +
                            " was published with other bytes, and launchers that have it would not install "
                            "these. Choose another version (or --force).");
            if (past.isWithdrawn())
                return fail("Version " + request_.version + " was withdrawn. Use --force to offer it again.");
        }
        // Check the manifest too, because the statement may have been deleted.
        const UpdateManifest& now = offer_.manifest;
        if (hasOffer_ && now.version == request_.version && offeredArchiveSha256() != zipSha256_)
            return fail("Version " + request_.version +
                        " is on offer with other bytes. Choose another version (or --force).");
        return true;
    }

    [[nodiscard]] const std::string& offeredArchiveSha256() const {
        return offer_.manifest.encryptionKey.empty() ? offer_.manifest.sha256 : offer_.manifest.plaintextSha256;
    }

    // True if this release is already offered and its package is undamaged. Then the package is not written again, so
    // that copies in caches stay valid.
    bool keepPackage() {
        const UpdateManifest& now = offer_.manifest;
        if (!hasOffer_ || now.version != request_.version || offeredArchiveSha256() != zipSha256_ ||
            now.encryptionKey.empty() == request_.encrypt)
            return false;
        const std::string path = packagePath(now.sha256);
        if (sha256OfFile(path) != now.sha256) return false;
        std::error_code error;
        package_.size = fs::file_size(path, error);
        package_.sha256 = now.sha256;
        package_.plaintextSha256 = zipSha256_;
        packageKey_ = now.encryptionKey;
        result_.packagePath = path;
        result_.packageKept = !error && (!request_.encrypt || opensToZip(path, now.encryptionKey));
        return result_.packageKept;
    }

    [[nodiscard]] bool opensToZip(const std::string& container, const std::string& keyText) const {
        Sha256 hash;
        std::string ignored;
        return decryptPackageTo([&](const unsigned char* bytes, std::size_t count) { hash.update(bytes, count); },
                                container, keyText, ignored) &&
               hash.finish() == zipSha256_;
    }

    bool writePackage() {
        std::error_code error;
        const std::string temporary = temporaryName(joinPath(request_.siteDirectory, "package"));
        made_.push_back(temporary);
        const std::string key = request_.encrypt ? randomBytes(container::kKeySize) : std::string();
        if (!(request_.encrypt
                  ? sealPackage(request_.zipPath, temporary, key, package_, failureText_, request_.progress)
                  : copyPackage(request_.zipPath, temporary, package_, failureText_, request_.progress)))
            return false;
        packageKey_ = base64Encode(key);
        if (package_.plaintextSha256 != zipSha256_) return fail(request_.zipPath + " changed while it was being read.");
        result_.packagePath = packagePath(package_.sha256);
        makeReadable(temporary);
        const bool isNew = !fs::exists(result_.packagePath, error);
        fs::rename(temporary, result_.packagePath, error);
        if (error) return fail(result_.packagePath + " could not be written.");
        if (isNew) made_.push_back(result_.packagePath);
        return true;
    }

    [[nodiscard]] std::string packagePath(const std::string& sha256) const {
        return joinPath(request_.siteDirectory, "editor-" + sanitizeVersion(request_.version) + "-" +
                                                    sha256.substr(0, 16) + (request_.encrypt ? ".container" : ".zip"));
    }

    bool putStatement() {
        const PackageIdentity identity{request_.version, static_cast<std::int64_t>(package_.size), package_.sha256,
                                       request_.encrypt ? package_.plaintextSha256
                                                        : std::string(statement::kNoPlaintext)};
        const std::string text =
            writeStatement(identity, statement::kStatusOk, request_.nowSeconds, request_.days, keys_);
        if (text.empty()) return fail("The release statement could not be signed.");
        std::error_code error;
        makeReadableFolders(joinPath(request_.siteDirectory, site::kStatementsName));
        result_.statementPath = statementPath(request_.siteDirectory, package_.sha256);
        const bool isNew = !fs::exists(result_.statementPath, error);
        std::string before;
        if (!isNew) (void)readSmallFile(result_.statementPath, statement::kMaxBytes, before);
        if (!replaceFile(result_.statementPath, text, failureText_)) return false;
        replacedStatement_ = before;
        if (isNew) made_.push_back(result_.statementPath);
        statementText_ = text;
        result_.notAfter = request_.nowSeconds + request_.days * statement::kDaySeconds;
        return true;
    }

    // Reads the statement and the package from the disk before the manifest offers them, because another program or a
    // failing disk may have changed them.
    bool readBack() {
        std::string text;
        if (!readSmallFile(result_.statementPath, statement::kMaxBytes, text) || text != statementText_)
            return fail(result_.statementPath + " does not contain what was written to it.");
        if (hashFile(result_.packagePath, "reading the package back", request_.progress) != package_.sha256)
            return fail(result_.packagePath + " does not contain what was written to it.");
        return true;
    }

    // Must be the last step, because the new manifest makes launchers fetch the other files.
    bool putManifest() {
        PublishedManifest next;
        next.platform = request_.platform;
        next.manifest.version = request_.version;
        next.manifest.url = baseUrl_ + "/" + fs::path(result_.packagePath).filename().string();
        next.manifest.sha256 = package_.sha256;
        next.manifest.plaintextSha256 = package_.plaintextSha256;
        next.manifest.encryptionKey = packageKey_;
        result_.manifestUrl = baseUrl_ + "/" + std::string(site::kManifestName);
        result_.authenticityUrl = baseUrl_ + "/" + std::string(site::kStatementsName);
        std::vector<std::string> publicKeys;
        for (const PublisherKey& key : keys_)
            publicKeys.push_back(key.publicKey());
        result_.authenticityKeys = publisherKeysText(publicKeys);
        return replaceFile(result_.manifestPath, manifestText(next), failureText_);
    }

    const ReleaseRequest& request_;
    const std::vector<PublisherKey>& keys_;
    ReleaseResult& result_;
    std::string& failureText_;

    FileLock lock_; // the first of these members, so that it is released last
    PackagePlatform platform_ = PackagePlatform::Linux;
    std::string baseUrl_; // without slashes at its end
    bool hasOffer_ = false;
    PublishedManifest offer_; // the release that the directory offers before this one
    std::vector<PublishedStatement> statements_;
    std::string zipSha256_;
    WrittenPackage package_;
    std::string packageKey_; // base64; empty for a plain package
    std::string statementText_;
    std::vector<std::string> made_;
    std::string replacedStatement_; // the old text of a replaced statement; empty: none was replaced
};

} // namespace

bool publishRelease(const ReleaseRequest& request, const std::vector<PublisherKey>& keys, ReleaseResult& result,
                    std::string& failureText) {
    return Publication(request, keys, result, failureText).run();
}

std::string versionProblem(const std::string& version) {
    if (version.empty()) return "A release needs a version.";
    if (version.size() > kMaxVersionBytes) return "The version is longer than 128 bytes.";
    const auto printable = [](char byte) { return byte >= 0x20 && byte <= 0x7E; };
    if (!std::all_of(version.begin(), version.end(), printable) || version.front() == ' ' || version.back() == ' ' ||
        version.find("  ") != std::string::npos)
        return "The version may contain printable ASCII and single blanks inside.";
    return {};
}

std::string baseUrlProblem(const std::string& url) {
    std::string host;
    std::string path;
    int port = 0;
    const auto allowed = [](char byte) {
        return byte > 0x20 && byte < 0x7F && std::string_view("?#@\\\"<>^`{|}").find(byte) == std::string_view::npos;
    };
    if (!parseHttpsUrl(url, host, port, path)) return "The base URL must be a valid https:// URL.";
    if (!std::all_of(url.begin(), url.end(), allowed))
        return "The base URL may contain no query, fragment, user name, blank or quote.";
    if (path.ends_with(".json")) return "The base URL is the address of the directory, not of the manifest in it.";
    // Launchers treat an address with "YOUR_" as a placeholder and do not update. They overwrite the text after
    // "platform=".
    for (const char* taken : {"YOUR_", "platform="})
        if (url.find(taken) != std::string::npos)
            return std::string("The base URL may not contain \"") + taken + "\": launchers treat it specially.";
    return {};
}
