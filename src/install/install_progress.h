#pragma once

// What the screens show of an install, as a plain value, and the events of an update run that change it. No lock, no
// disk, no network. Any thread.

#include <cstdint>
#include <string>
#include <vector>

#include "install/download_record.h"

// The order is fixed: values 1 to 3 are busy.
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
        // A run passes through these.
        Started,
        DownloadStarted, // detail: the path of the package file
        Downloaded,
        InstallStarted,

        // A run ends with one of these.
        NotConfigured,
        Offline,        // the server cannot be used, and there is an editor
        Unreachable,    // the server did not answer, and there is no editor
        ManifestFailed, // detail: the cause, as the user reads it
        PackageUrlInvalid,
        WaitCancelled, // while another launcher installs
        DownloadsNotWritable,
        DownloadCancelled,
        DownloadFailed,
        ChecksumDiffers,
        DownloadNotFinalized,
        DecryptionFailed, // detail: the cause, as the user reads it
        PlaintextDiffers,
        NotAuthentic, // detail: the cause, as the user reads it
        NotAnArchive,
        ExtractionFailed,
        InstallCancelled,
        SwapFailed,
        UpToDate,
        Installed,
    };
    Kind kind;
    std::string version = {}; // of the manifest; empty before there is one
    std::string detail = {};
};

// Turns an event into status, message and rows.
void recordEvent(InstallProgress& progress, const UpdateEvent& event);

// The byte counters of the transfer, in the progress and in its newest row.
void recordBytes(InstallProgress& progress, std::int64_t received, std::int64_t total);
