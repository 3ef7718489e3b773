#include "sandbox/sample_release.h"

#include <cstddef>
#include <string_view>

#include <miniz.h>

#include "crypto/base64.h"
#include "publish/keys.h"
#include "publish/site.h"
#include "publish/statement_writer.h"
#include "system/operating_system.h"

namespace {

#ifdef _WIN32
constexpr char kPlatform[] = "windows";
#else
constexpr char kPlatform[] = "linux";
#endif

bool packEditor(const std::string& archive, const std::string& editor, const std::string& font) {
    mz_zip_archive zip{};
    if (!mz_zip_writer_init_file(&zip, archive.c_str(), 0)) return false;
    const bool packed = mz_zip_writer_add_file(&zip, "editor.exe", editor.c_str(), nullptr, 0, MZ_BEST_SPEED) &&
                        mz_zip_writer_add_file(&zip, "Roboto-Medium.ttf", font.c_str(), nullptr, 0, MZ_BEST_SPEED) &&
                        mz_zip_writer_finalize_archive(&zip);
    return mz_zip_writer_end(&zip) && packed;
}

// Changes the first character of a member's value in the manifest. The value stays well-formed.
bool alterManifest(const std::string& path, std::string_view member, std::string& failureText) {
    constexpr std::size_t kLongestManifest = 65536;
    std::string text;
    if (!readSmallFile(path, kLongestManifest, text)) return false;
    const std::string begin = "\"" + std::string(member) + "\": \"";
    const std::size_t valueAt = text.find(begin);
    if (valueAt == std::string::npos) return false;
    char& digit = text[valueAt + begin.size()];
    digit = digit == '0' ? '1' : '0';
    return replaceFile(path, text, failureText);
}

bool spoilRelease(const std::string& fault, const ReleaseRequest& request, const std::vector<PublisherKey>& keys,
                  ReleaseResult& result, std::string& failureText) {
    using namespace release_fault;
    if (fault == kWrongHash) return alterManifest(result.manifestPath, "sha256", failureText);
    if (fault == kWrongArchiveHash) return alterManifest(result.manifestPath, "plaintext_sha256", failureText);
    if (fault == kWrongKey) return alterManifest(result.manifestPath, "key", failureText);
    if (fault == kUntrusted) result.authenticityKeys = base64Encode(std::string(32, 'u'));
    if (fault == kUnsigned) return std::filesystem::remove(result.statementPath);
    if (fault == kRevoked) {
        StatementReport report;
        StatementRequest revocation;
        revocation.siteDirectory = request.siteDirectory;
        revocation.versions = {request.version};
        revocation.revoke = true;
        revocation.days = request.days;
        revocation.nowSeconds = request.nowSeconds;
        return renewStatements(revocation, keys, report, failureText);
    }
    return true;
}

} // namespace

bool publishSampleEditor(const SampleRelease& sample, ReleaseResult& result, std::string& failureText) {
    ReleaseRequest request;
    request.zipPath = sample.archive.string();
    if (request.zipPath.empty()) {
        request.zipPath = (sample.workFolder / "sample-editor.zip").string();
        if (!packEditor(request.zipPath, sample.editor.string(), sample.font.string())) {
            failureText = "the sample editor could not be packed";
            return false;
        }
    }
    const std::string keyFile = (sample.workFolder / "publisher.key").string();
    std::string publicKey;
    std::vector<PublisherKey> keys(1);
    std::vector<std::string> warnings;
    if (!makeKeyFile(keyFile, true, publicKey, failureText)) return false;
    if (!keys.front().read(keyFile, warnings, failureText)) return false;

    request.version = kSampleEditorVersion;
    request.platform = kPlatform;
    request.baseUrl = sample.baseUrl;
    request.siteDirectory = sample.siteFolder.string();
    request.nowSeconds = currentTimeSeconds();
    if (sample.fault == release_fault::kExpired) request.nowSeconds -= 100 * statement::kDaySeconds;
    return publishRelease(request, keys, result, failureText) &&
           spoilRelease(sample.fault, request, keys, result, failureText);
}
