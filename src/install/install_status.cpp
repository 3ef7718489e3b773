#include "install/install_status.h"

namespace {

using Status = EditorInstallStatus;

void show(InstallProgress& progress, Status status, const std::string& message) {
    progress.status = status;
    progress.statusMessage = message;
}

// Does not change the download rows.
void failUpdate(InstallProgress& progress, const std::string& message) {
    show(progress, Status::Failed, message);
}

// Marks the first row as failed. The first row is the active download, because new rows are added at the front and an
// active row cannot be removed.
void failTransfer(InstallProgress& progress, const std::string& message) {
    progress.downloads.front().status = DownloadStatus::Failed;
    failUpdate(progress, message);
}

void addRow(InstallProgress& progress, const std::string& version, const std::string& packagePath) {
    DownloadRecord row;
    row.version = version;
    row.filePath = packagePath;
    progress.downloads.insert(progress.downloads.begin(), row);
}

void setRows(InstallProgress& progress, const std::string& version, DownloadStatus status) {
    for (DownloadRecord& row : progress.downloads) {
        if (row.version == version) row.status = status;
    }
}

void startInstallingRows(InstallProgress& progress, const std::string& version) {
    for (DownloadRecord& row : progress.downloads) {
        if (row.version == version && row.status == DownloadStatus::Downloaded) row.status = DownloadStatus::Installing;
    }
}

} // namespace

void recordEvent(InstallProgress& progress, const UpdateEvent& event) {
    switch (event.kind) {
    case UpdateEvent::Started:
        progress.downloadedBytes = progress.totalBytes = 0;
        return show(progress, Status::Checking, "Checking for updates…");
    case UpdateEvent::DownloadStarted:
        progress.downloadedBytes = progress.totalBytes = 0;
        addRow(progress, event.version, event.detail);
        return show(progress, Status::Downloading, "Downloading editor " + event.version + "…");
    case UpdateEvent::Downloaded:
        progress.downloads.front().status = DownloadStatus::Downloaded;
        return;
    case UpdateEvent::InstallStarted:
        startInstallingRows(progress, event.version);
        return show(progress, Status::Installing, "Installing editor " + event.version + "…");

    case UpdateEvent::NotConfigured:
        return show(progress, Status::Idle, "Update server not configured. Please locate or install VOLO Editor.");
    case UpdateEvent::Offline:
        return show(progress, Status::InstalledOffline, "Installed (offline mode)");
    case UpdateEvent::Unreachable:
        return failUpdate(progress, "Could not reach the update server, and no local editor was found.");
    case UpdateEvent::ManifestFailed:
        return failUpdate(progress, event.detail);
    case UpdateEvent::PackageUrlInvalid:
        return failUpdate(progress, "The package URL in the update manifest must be a valid https:// URL.");
    case UpdateEvent::WaitCancelled:
        return failUpdate(progress, "Install cancelled.");
    case UpdateEvent::DownloadsNotWritable:
        return failUpdate(progress, "Could not write to the downloads directory.");
    case UpdateEvent::DownloadCancelled:
        return failTransfer(progress, "Download cancelled.");
    case UpdateEvent::DownloadFailed:
        return failTransfer(progress, "The editor package download failed.");
    case UpdateEvent::ChecksumDiffers:
        return failTransfer(progress, "The downloaded package failed its checksum verification.");
    case UpdateEvent::DownloadNotFinalized:
        return failUpdate(progress, "Could not finalize the downloaded package.");
    case UpdateEvent::DecryptionFailed:
        return failUpdate(progress, "Decrypting editor package failed: " + event.detail);
    case UpdateEvent::PlaintextDiffers:
        return failUpdate(progress, "The decrypted editor package failed plaintext checksum verification.");
    case UpdateEvent::NotAuthentic:
        return failUpdate(progress, "Authenticity check failed: " + event.detail);
    case UpdateEvent::NotAnArchive:
        return failUpdate(progress, "The editor package is not a readable zip archive.");
    case UpdateEvent::ExtractionFailed:
        return failUpdate(progress, "Extracting the editor package failed.");
    case UpdateEvent::InstallCancelled:
        setRows(progress, event.version, DownloadStatus::Failed);
        return show(progress, Status::Failed, "Install cancelled.");
    case UpdateEvent::SwapFailed:
        return failUpdate(progress, "Could not move the extracted editor into place.");
    case UpdateEvent::Installed:
        setRows(progress, event.version, DownloadStatus::Installed);
        [[fallthrough]];
    case UpdateEvent::UpToDate:
        return show(progress, Status::Installed, "Installed — version " + event.version);
    }
}

void recordBytes(InstallProgress& progress, std::int64_t received, std::int64_t total) {
    progress.downloadedBytes = received;
    progress.totalBytes = total;
    if (progress.downloads.empty()) return;
    progress.downloads.front().downloadedBytes = received;
    progress.downloads.front().totalBytes = total;
}
