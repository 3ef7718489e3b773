#include "install/update_pipeline.h"

#include <filesystem>
#include <fstream>
#include <system_error>
#include <variant>

#include "crypto/sha256.h"
#include "install/editor_location.h"
#include "install/package_container.h"
#include "install/package_extraction.h"
#include "install/update_manifest.h"
#include "system/http.h"

namespace fs = std::filesystem;

namespace {

constexpr int kPackageReadTimeoutSeconds = 120;

bool isEditorNearLauncher() {
    return !findEditorNearLauncher().empty();
}

bool isUpToDate(const UpdateManifest& manifest) {
    return isEditorNearLauncher() && installedEditorVersion() == manifest.version;
}

// Without a checksum in the manifest any file will do.
bool isUsablePackage(const std::string& path, const std::string& sha256) {
    std::error_code error;
    return fs::exists(path, error) && (sha256.empty() || sha256OfFile(path) == sha256);
}

// The staging directory is next to the target and therefore on the same volume, so that the rename works.
std::string makeEmptyStagingDirectory() {
    const fs::path staging = fs::path(managedEditorDirectory()).parent_path() / "editor-staging";
    std::error_code ignored;
    fs::remove_all(staging, ignored);
    fs::create_directories(staging, ignored);
    return staging.string();
}

// Verifies the package and extracts it. `decryptedPath` is the archive from a container, empty for a plain package.
UpdateEvent verifyAndExtract(const UpdateRun& run, const UpdateManifest& manifest, const std::string& packagePath,
                             const std::string& decryptedPath, const std::string& staging) {
    if (!decryptedPath.empty() && !manifest.plaintextSha256.empty() &&
        sha256OfFile(decryptedPath) != manifest.plaintextSha256)
        return {UpdateEvent::PlaintextDiffers};
    std::string cause;
    if (!verifyArtifactAuthenticity(run.authenticity, manifest.version, packagePath, decryptedPath, cause))
        return {UpdateEvent::NotAuthentic, manifest.version, cause};
    switch (extractArchive(decryptedPath.empty() ? packagePath : decryptedPath, staging, run.cancelRequested)) {
    case ExtractionOutcome::Unreadable:
        return {UpdateEvent::NotAnArchive};
    case ExtractionOutcome::Failed:
        return {UpdateEvent::ExtractionFailed};
    case ExtractionOutcome::Done:
        break;
    }
    return {UpdateEvent::Installed, manifest.version};
}

UpdateEvent installPackage(const UpdateRun& run, const UpdateManifest& manifest, const std::string& packagePath) {
    const std::string staging = makeEmptyStagingDirectory();
    std::string decryptedPath;
    if (isEncryptedPackage(packagePath)) {
        decryptedPath = packagePath + ".decrypted.zip";
        std::string cause;
        // After this failure alone the decrypted file stays.
        if (!decryptPackage(packagePath, decryptedPath, manifest.encryptionKey, cause))
            return {UpdateEvent::DecryptionFailed, manifest.version, cause};
    }
    UpdateEvent end = verifyAndExtract(run, manifest, packagePath, decryptedPath, staging);
    std::error_code ignored;
    if (!decryptedPath.empty()) fs::remove(decryptedPath, ignored);
    if (end.kind == UpdateEvent::ExtractionFailed) {
        fs::remove_all(staging, ignored);
        // A failure in the entry during which the user cancelled is a cancel.
        if (run.cancelRequested) return {UpdateEvent::InstallCancelled, manifest.version};
    }
    if (end.kind != UpdateEvent::Installed) return end;
    if (!swapIn(staging)) return {UpdateEvent::SwapFailed};
    std::ofstream(editorVersionMarkerPath()) << manifest.version << '\n';
    return end;
}

} // namespace

UpdateEvent updateEditor(const UpdateRun& run) {
    if (!isManifestUrlConfigured(run.manifestUrl))
        return {isEditorNearLauncher() ? UpdateEvent::Offline : UpdateEvent::NotConfigured};
    const ManifestAnswer answer = fetchManifest(run.manifestUrl);
    // No answer falls back to the installed editor. A bad answer fails the run.
    if (std::holds_alternative<NoAnswer>(answer))
        return {isEditorNearLauncher() ? UpdateEvent::Offline : UpdateEvent::Unreachable};
    if (const auto* bad = std::get_if<BadManifest>(&answer)) return {UpdateEvent::ManifestFailed, {}, bad->failureText};
    const auto& manifest = std::get<UpdateManifest>(answer);

    PackageTransfer transfer;
    if (!parseHttpsUrl(manifest.url, transfer.server.host, transfer.server.port, transfer.urlPath))
        return {UpdateEvent::PackageUrlInvalid};
    if (isUpToDate(manifest)) return {UpdateEvent::UpToDate, manifest.version};

    std::error_code ignored; // the download reports a directory that is missing
    fs::create_directories(run.downloadsDirectory, ignored);
    transfer.packagePath = packagePathIn(run.downloadsDirectory, manifest.version);
    if (!isUsablePackage(transfer.packagePath, manifest.sha256)) {
        fs::remove(transfer.packagePath, ignored);
        transfer.server.readTimeoutSeconds = kPackageReadTimeoutSeconds;
        transfer.sha256 = manifest.sha256;
        run.onEvent({UpdateEvent::DownloadStarted, manifest.version, transfer.packagePath});
        const UpdateEvent::Kind ended = downloadPackage(transfer, run.cancelRequested, run.onProgress);
        if (ended != UpdateEvent::Downloaded) return {ended, manifest.version};
        run.onEvent({UpdateEvent::Downloaded, manifest.version});
    }
    run.onEvent({UpdateEvent::InstallStarted, manifest.version});
    return installPackage(run, manifest, transfer.packagePath);
}
