#pragma once

// A DownloadRecord is one row of the Downloads screen: one package download since the launcher started.

#include <cstdint>
#include <string>

enum class DownloadStatus : std::int32_t { Downloading = 0, Downloaded = 1, Installing = 2, Installed = 3, Failed = 4 };

struct DownloadRecord {
    std::string version;  // from the manifest, unchanged
    std::string filePath; // the package, never the part file
    DownloadStatus status = DownloadStatus::Downloading;
    std::int64_t downloadedBytes = 0;
    std::int64_t totalBytes = 0; // 0 while unknown
};
