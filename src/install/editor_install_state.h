#pragma once

// The one record through which the install worker and the frame thread talk. The worker runs the whole road from the
// update manifest to the installed editor (update_pipeline.cpp); the screens read, start and cancel it here.
//
// Members are called on the frame thread unless they say otherwise. The mutex is held for a few assignments or one
// copy, never across network, file or hashing work.

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "install/artifact_authenticity.h"
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

class EditorInstallState {
  public:
    EditorInstallState(const std::string& manifestUrl, const std::string& downloadsDirectory,
                       const ArtifactAuthenticity& authenticity = {});
    ~EditorInstallState(); // cancels and joins; waits for the worker's next cancellation point
    EditorInstallState(const EditorInstallState&) = delete;
    EditorInstallState& operator=(const EditorInstallState&) = delete;

    void startUpdate();    // does nothing while a run is busy
    void requestCancel();  // takes effect at the worker's next cancellation point
    void joinIfFinished(); // once per frame; does not block

    EditorInstallStatus status() const;
    std::int64_t downloadedBytes() const;
    std::int64_t totalBytes() const;
    const std::string& statusMessage(); // copy at once; the next call overwrites it
    std::vector<DownloadRecord> downloadsSnapshot() const;

    // Deletes a row and its package file. A row that is being downloaded stays.
    void removeDownload(int index);

  private:
    friend class UpdatePipeline; // the worker's side

    void runUpdate();                            // worker
    void failUpdate(const std::string& message); // worker

    const std::string manifestUrl_;
    const std::string downloadsDirectory_;
    const ArtifactAuthenticity authenticity_;

    mutable std::mutex mutex_; // guards the next five
    EditorInstallStatus status_ = EditorInstallStatus::Idle;
    std::string statusMessage_;
    std::int64_t downloadedBytes_ = 0;
    std::int64_t totalBytes_ = 0;           // 0 while unknown
    std::vector<DownloadRecord> downloads_; // newest first

    std::atomic<bool> cancelRequested_ = false; // set by the frame thread, read by the worker and its callbacks
    std::atomic<bool> workerFinished_ = false;  // the worker's last act
    std::thread worker_;                        // frame thread only
    std::string shownMessage_;                  // frame thread only: what statusMessage returned last
};
