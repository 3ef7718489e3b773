#include "install/update_pipeline.h"

#include <filesystem>
#include <fstream>
#include <system_error>

#include "crypto/sha256.h"
#include "install/artifact_authenticity.h"
#include "install/editor_location.h"
#include "install/package_container.h"
#include "install/package_extraction.h"
#include "system/http.h"

// What fetchManifest leaves as its failure when no server answered. It is not a text for the user.
static const char kNoAnswer[] = "network";

void UpdatePipeline::run() {
    if (!isManifestUrlConfigured(state_.manifestUrl_)) {
        if (!findEditorNearLauncher().empty()) return reportOffline();
        return report(EditorInstallStatus::Idle, "Update server not configured. Please locate or install VOLO Editor.");
    }
    std::string failure;
    if (!fetchManifest(failure)) {
        // An answer that is no manifest fails the run even where an editor is installed; silence does not.
        if (failure != kNoAnswer) return state_.failUpdate(failure);
        if (!findEditorNearLauncher().empty()) return reportOffline();
        return state_.failUpdate("Could not reach the update server, and no local editor was found.");
    }
    if (!parseHttpsUrl(manifest_.url, packageHost_, packagePort_, packageUrlPath_))
        return state_.failUpdate("The package URL in the update manifest must be a valid https:// URL.");
    if (!findEditorNearLauncher().empty() && installedEditorVersion() == manifest_.version)
        return report(EditorInstallStatus::Installed, installedMessage());
    if (havePackage() || downloadPackage()) installPackage();
}

bool UpdatePipeline::fetchManifest(std::string& failureText) {
    HttpsServer server;
    std::string path;
    if (!parseHttpsUrl(state_.manifestUrl_, server.host, server.port, path)) {
        failureText = "The update manifest URL must be a valid https:// URL.";
        return false;
    }
    server.readTimeoutSeconds = 30;
    const HttpsAnswer answer = httpsGet(server, path);
    if (!answer.answered) {
        failureText = kNoAnswer;
        return false;
    }
    if (answer.status != 200) {
        failureText = "The update server returned HTTP " + std::to_string(answer.status) + " for the manifest.";
        return false;
    }
    return parseUpdateManifest(answer.body, manifest_, failureText);
}

// Settles where the package lies, and whether what lies there already is good enough.
bool UpdatePipeline::havePackage() {
    const std::filesystem::path downloads(state_.downloadsDirectory_);
    std::error_code error;
    std::filesystem::create_directories(downloads, error);
    packagePath_ = (downloads / ("zantor_editor_" + sanitizeVersion(manifest_.version) + ".zip")).string();
    if (!std::filesystem::exists(packagePath_, error)) return false;
    if (manifest_.sha256.empty() || sha256OfFile(packagePath_) == manifest_.sha256) return true;
    std::filesystem::remove(packagePath_, error);
    return false;
}

void UpdatePipeline::installPackage() {
    {
        const std::lock_guard lock(state_.mutex_);
        state_.status_ = EditorInstallStatus::Installing;
        state_.statusMessage_ = "Installing editor " + manifest_.version + "…";
        for (DownloadRecord& row : state_.downloads_) {
            if (row.version == manifest_.version && row.status == DownloadStatus::Downloaded)
                row.status = DownloadStatus::Installing;
        }
    }
    // Beside the target, so that the rename at the end stays on one volume.
    const std::string staging =
        (std::filesystem::path(managedEditorDirectory()).parent_path() / "editor-staging").string();
    std::error_code ignored;
    std::filesystem::remove_all(staging, ignored);
    std::filesystem::create_directories(staging, ignored);

    std::string decryptedPath;
    if (isEncryptedPackage(packagePath_) && !openContainer(decryptedPath)) return;

    const auto discardDecrypted = [&] {
        if (!decryptedPath.empty()) std::filesystem::remove(decryptedPath, ignored);
    };
    std::string failure;
    if (!verifyArtifactAuthenticity(state_.authenticity_, manifest_.version, packagePath_, decryptedPath, failure)) {
        discardDecrypted();
        return state_.failUpdate("Authenticity check failed: " + failure);
    }
    const std::string& archivePath = decryptedPath.empty() ? packagePath_ : decryptedPath;
    const ExtractionOutcome outcome = extractArchive(archivePath, staging, state_.cancelRequested_);
    discardDecrypted();
    if (outcome == ExtractionOutcome::Unreadable)
        return state_.failUpdate("The editor package is not a readable zip archive.");
    if (outcome == ExtractionOutcome::Failed) {
        std::filesystem::remove_all(staging, ignored);
        // A failure in the entry during which the user cancelled is a cancel.
        if (state_.cancelRequested_)
            return reportRows(DownloadStatus::Failed, EditorInstallStatus::Failed, "Install cancelled.");
        return state_.failUpdate("Extracting the editor package failed.");
    }
    if (!swapIn(staging)) return state_.failUpdate("Could not move the extracted editor into place.");
    std::ofstream(editorVersionMarkerPath()) << manifest_.version << '\n';
    reportRows(DownloadStatus::Installed, EditorInstallStatus::Installed, installedMessage());
}

bool UpdatePipeline::openContainer(std::string& decryptedPath) {
    decryptedPath = packagePath_ + ".decrypted.zip";
    std::string failure;
    if (!decryptPackage(packagePath_, decryptedPath, manifest_.encryptionKey, failure)) {
        state_.failUpdate("Decrypting editor package failed: " + failure);
        return false;
    }
    if (!manifest_.plaintextSha256.empty() && sha256OfFile(decryptedPath) != manifest_.plaintextSha256) {
        std::error_code ignored;
        std::filesystem::remove(decryptedPath, ignored);
        state_.failUpdate("The decrypted editor package failed plaintext checksum verification.");
        return false;
    }
    return true;
}

void UpdatePipeline::report(EditorInstallStatus status, const std::string& message) {
    const std::lock_guard lock(state_.mutex_);
    state_.status_ = status;
    state_.statusMessage_ = message;
}

void UpdatePipeline::reportRows(DownloadStatus rowStatus, EditorInstallStatus status, const std::string& message) {
    const std::lock_guard lock(state_.mutex_);
    for (DownloadRecord& row : state_.downloads_) {
        if (row.version == manifest_.version) row.status = rowStatus;
    }
    state_.status_ = status;
    state_.statusMessage_ = message;
}

void UpdatePipeline::reportOffline() {
    report(EditorInstallStatus::InstalledOffline, "Installed (offline mode)");
}

std::string UpdatePipeline::installedMessage() const {
    return "Installed — version " + manifest_.version;
}
