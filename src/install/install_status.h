#pragma once

// Holds what the screens show of an install (status, message, byte counts, download rows), and changes it for each
// event of an update run. Uses plain values: no locks, no files, no network. Any thread.

#include <cstdint>
#include <string>
#include <vector>

#include "install/download_record.h"

// Keep the order: values 1 to 3 mean that a run is active.
enum class EditorInstallStatus : std::int32_t {
    Idle = 0,
    Checking = 1,
    Downloading = 2,
    Installing = 3,
    Installed = 4,
    InstalledOffline = 5,
    Failed = 6
};

struct InstallProgress {
    EditorInstallStatus status = EditorInstallStatus::Idle;
    std::string statusMessage;
    std::int64_t downloadedBytes = 0;
    std::int64_t totalBytes = 0;           // 0 while unknown
    std::vector<DownloadRecord> downloads; // newest first
};

// One step or the end of an update run.
struct UpdateEvent {
    enum Kind {
        // Steps of a run.
        Started,
        DownloadStarted, // detail: the path of the package file
        Downloaded,
        InstallStarted,

        // Each run ends with one of these.
        NotConfigured,
        Offline,        // the server is not configured or did not respond, but an editor is installed
        Unreachable,    // the server did not respond, and no editor is installed
        ManifestFailed, // detail: the cause, for the user
        PackageUrlInvalid,
        WaitCancelled, // cancelled while another launcher installs, or the launcher closed during a checksum
        DownloadsNotWritable,
        DownloadCancelled,
        DownloadFailed,
        ChecksumDiffers,
        DownloadNotFinalized,
        DecryptionFailed, // detail: the cause, for the user
        PlaintextDiffers,
        NotAuthentic, // detail: the cause, for the user
        NotAnArchive,
        ExtractionFailed,
        InstallCancelled,
        SwapFailed,
        UpToDate,
        Installed,
    };
    Kind kind;
    std::string version = {}; // from the manifest; empty in events that do not need it
    std::string detail = {};
};

// Updates status, message and rows for one event.
void recordEvent(InstallProgress& progress, const UpdateEvent& event);

// Sets the byte counters of the active download, in `progress` and in the newest row.
void recordBytes(InstallProgress& progress, std::int64_t received, std::int64_t total);
