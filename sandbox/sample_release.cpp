#include "sandbox/sample_release.h"

#include <miniz.h>

#include "publish/keys.h"
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

} // namespace

bool publishSampleEditor(const std::filesystem::path& editor, const std::filesystem::path& font,
                         const std::filesystem::path& workFolder, const std::filesystem::path& siteFolder,
                         const std::string& baseUrl, ReleaseResult& result, std::string& failureText) {
    ReleaseRequest request;
    request.zipPath = (workFolder / "sample-editor.zip").string();
    if (!packEditor(request.zipPath, editor.string(), font.string())) {
        failureText = "the sample editor could not be packed";
        return false;
    }
    const std::string keyFile = (workFolder / "publisher.key").string();
    std::string publicKey;
    std::vector<PublisherKey> keys(1);
    std::vector<std::string> warnings;
    if (!makeKeyFile(keyFile, true, publicKey, failureText)) return false;
    if (!keys.front().read(keyFile, warnings, failureText)) return false;

    request.version = kSampleEditorVersion;
    request.platform = kPlatform;
    request.baseUrl = baseUrl;
    request.siteDirectory = siteFolder.string();
    request.nowSeconds = currentTimeSeconds();
    return publishRelease(request, keys, result, failureText);
}
