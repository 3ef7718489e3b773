#include "install/update_pipeline.h"

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <variant>

#include "crypto/sha256.h"
#include "install/editor_location.h"
#include "install/editor_replacement.h"
#include "install/install_locks.h"
#include "install/package_container.h"
#include "install/package_extraction.h"
#include "install/update_manifest.h"
#include "system/disk.h"
#include "system/http.h"
#include "system/url.h"

namespace fs = std::filesystem;

namespace {

constexpr int kPackageReadTimeoutSeconds = 120;

bool isEditorNearLauncher() {
    return !findEditorNearLauncher().empty();
}

bool isUpToDate(const UpdateManifest& manifest) {
    return isEditorNearLauncher() && installedEditorVersion() == manifest.version;
}

// --- package -------------------------------------------------------------------------------------------------------

// True if the package is on disk and has the manifest's checksum. If the manifest has no checksum, any file is usable.
bool isUsablePackage(const std::string& path, const std::string& sha256, const UpdateCancellation& stop) {
    std::error_code error;
    return fs::exists(path, error) && (sha256.empty() || sha256OfFile(path, &stop.closing) == sha256);
}

// Uses the package on disk or downloads it. Returns Downloaded, or the event that ends the run.
UpdateEvent::Kind bringPackage(const UpdateRun& run, const UpdateManifest& manifest, PackageTransfer& transfer) {
    if (isUsablePackage(transfer.packagePath, manifest.sha256, run.stop)) return UpdateEvent::Downloaded;
    if (run.stop.closing) return UpdateEvent::WaitCancelled; // the check was interrupted: keep the package
    std::error_code ignored;
    fs::remove(transfer.packagePath, ignored);
    transfer.server.readTimeoutSeconds = kPackageReadTimeoutSeconds;
    transfer.server.abort = run.stop.transfer;
    transfer.sha256 = manifest.sha256;
    run.onEvent({UpdateEvent::DownloadStarted, manifest.version, transfer.packagePath});
    const UpdateEvent::Kind ended = downloadPackage(transfer, run.stop, run.onProgress);
    if (ended == UpdateEvent::Downloaded) run.onEvent({ended, manifest.version});
    return ended;
}

// Removes part files and decrypted packages that killed runs left in the downloads directory. Packages stay.
void removeLeftovers(const std::string& downloadsDirectory, const std::string& packagePath) {
    std::error_code error;
    for (fs::directory_iterator at(downloadsDirectory, error), end; !error && at != end; at.increment(error)) {
        const std::string name = at->path().filename().string();
        const bool isOurs = name.starts_with(kPackageNameStart) && at->path() != fs::path(packagePath);
        std::error_code ignored;
        if (isOurs && (name.ends_with(".zip.part") || name.ends_with(".zip.decrypted.zip")))
            fs::remove(at->path(), ignored);
    }
}

// --- install -------------------------------------------------------------------------------------------------------

// Verifies the package and extracts it. `decryptedPath` is the decrypted archive; it is empty if the package is not
// encrypted. Returns Installed on success, otherwise the event that ends the run.
UpdateEvent verifyAndExtract(const UpdateRun& run, const UpdateManifest& manifest, const std::string& packagePath,
                             const std::string& decryptedPath, const PackageDigests& digests,
                             const std::string& staging) {
    if (!decryptedPath.empty() && !manifest.plaintextSha256.empty() && digests.plaintext != manifest.plaintextSha256)
        return {UpdateEvent::PlaintextDiffers};
    std::string cause;
    if (!verifyArtifactAuthenticity(run.authenticity, manifest.version, packagePath, decryptedPath, run.stop, cause,
                                    digests))
        return {UpdateEvent::NotAuthentic, manifest.version, cause};
    switch (extractArchive(decryptedPath.empty() ? packagePath : decryptedPath, staging, run.stop)) {
    case ExtractionOutcome::Unreadable:
        return {UpdateEvent::NotAnArchive};
    case ExtractionOutcome::Failed:
        return {UpdateEvent::ExtractionFailed};
    case ExtractionOutcome::Done:
        break;
    }
    return {UpdateEvent::Installed, manifest.version};
}

void writeMarker(const std::string& version) {
    std::ofstream(editorVersionMarkerPath()) << version << '\n';
    (void)syncFile(editorVersionMarkerPath()); // a failed write of the marker does not fail the run
}

UpdateEvent installPackage(const UpdateRun& run, const UpdateManifest& manifest, const std::string& packagePath) {
    // The staging directory is on the editor's volume, so that a rename can move it.
    const std::string staging = (fs::path(managedEditorDirectory()).parent_path() / "editor-staging").string();
    std::error_code ignored; // extractArchive fails if the staging directory is not empty
    fs::remove_all(staging, ignored);
    fs::create_directories(staging, ignored);
    // The manifest's checksum is the file's digest: bringPackage has compared them.
    PackageDigests digests{manifest.sha256, {}};
    std::string decryptedPath;
    if (isEncryptedPackage(packagePath)) {
        decryptedPath = packagePath + ".decrypted.zip";
        std::string cause;
        GrowingFileSha256 plaintext(decryptedPath, &run.stop.closing);
        const auto onWritten = [&](std::uint64_t size) { plaintext.grewTo(size); };
        // If the decryption fails, the decrypted file stays on the disk. Otherwise it is removed below.
        if (!decryptPackage(packagePath, decryptedPath, manifest.encryptionKey, cause, onWritten))
            return {UpdateEvent::DecryptionFailed, manifest.version, cause};
        digests.plaintext = plaintext.finish();
    }
    UpdateEvent end = verifyAndExtract(run, manifest, packagePath, decryptedPath, digests, staging);
    if (!decryptedPath.empty()) fs::remove(decryptedPath, ignored);
    if (end.kind == UpdateEvent::ExtractionFailed) {
        fs::remove_all(staging, ignored);
        // If the user has cancelled, report the cancel, even if the extraction failed for another reason.
        if (run.stop.cancelRequested) return {UpdateEvent::InstallCancelled, manifest.version};
    }
    if (end.kind != UpdateEvent::Installed) return end;
    if (!replaceEditor(staging, run.stop)) return {UpdateEvent::SwapFailed};
    writeMarker(manifest.version);
    return end;
}

// Runs the steps that follow the manifest. Before these steps, the run changes no files.
UpdateEvent updateFromManifest(const UpdateRun& run, const UpdateManifest& manifest, PackageTransfer& transfer) {
    const fs::path downloads(run.downloadsDirectory);
    std::error_code ignored; // if the directory is missing, the download reports it
    fs::create_directories(downloads, ignored);
    InstallLocks locks;
    if (!locks.take(run.downloadsDirectory, managedEditorDirectory(), run.stop)) return {UpdateEvent::WaitCancelled};
    // Another launcher may have installed the version since this run compared the versions.
    if (isUpToDate(manifest)) return {UpdateEvent::UpToDate, manifest.version};

    transfer.packagePath = packagePathIn(run.downloadsDirectory, manifest.version);
    const UpdateEvent::Kind brought = bringPackage(run, manifest, transfer);
    if (brought != UpdateEvent::Downloaded) return {brought, manifest.version};
    run.onEvent({UpdateEvent::InstallStarted, manifest.version});
    UpdateEvent end = installPackage(run, manifest, transfer.packagePath);
    if (end.kind == UpdateEvent::Installed) removeLeftovers(run.downloadsDirectory, transfer.packagePath);
    return end;
}

} // namespace

UpdateEvent updateEditor(const UpdateRun& run) {
    if (!isManifestUrlConfigured(run.manifestUrl))
        return {isEditorNearLauncher() ? UpdateEvent::Offline : UpdateEvent::NotConfigured};
    const ManifestAnswer answer = fetchManifest(run.manifestUrl, run.stop.requests);
    // If the server does not respond, the run keeps the installed editor. An invalid response fails the run.
    if (std::holds_alternative<NoAnswer>(answer))
        return {isEditorNearLauncher() ? UpdateEvent::Offline : UpdateEvent::Unreachable};
    if (const auto* bad = std::get_if<BadManifest>(&answer)) return {UpdateEvent::ManifestFailed, {}, bad->failureText};
    const auto& manifest = std::get<UpdateManifest>(answer);

    PackageTransfer transfer;
    if (!parseHttpsUrl(manifest.url, transfer.server.host, transfer.server.port, transfer.urlPath))
        return {UpdateEvent::PackageUrlInvalid};
    if (isUpToDate(manifest)) return {UpdateEvent::UpToDate, manifest.version};
    return updateFromManifest(run, manifest, transfer);
}
