#pragma once

// Starts and cancels the install worker, and hands what it reports to the screens.
//
// Members are called on the frame thread, except those marked "worker". The mutex is held for a few assignments or one
// copy, never across network, file or hashing work.

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "install/artifact_authenticity.h"
#include "install/download_record.h"
#include "install/install_progress.h"
#include "install/run_stop.h"

class EditorInstallState {
  public:
    EditorInstallState(const std::string& manifestUrl, const std::string& downloadsDirectory,
                       const ArtifactAuthenticity& authenticity = {}, const InstallProgress& initial = {});
    ~EditorInstallState(); // ends the run and joins; waits for decryption, removal, rename and sync
    EditorInstallState(const EditorInstallState&) = delete;
    EditorInstallState& operator=(const EditorInstallState&) = delete;

    void startUpdate();    // does nothing while a run is busy
    void requestCancel();  // takes effect at the worker's next cancellation point
    void joinIfFinished(); // once per frame; does not block

    [[nodiscard]] EditorInstallStatus status() const;
    [[nodiscard]] std::int64_t downloadedBytes() const;
    [[nodiscard]] std::int64_t totalBytes() const;
    [[nodiscard]] const std::string& statusMessage(); // copy at once: the next call overwrites it
    [[nodiscard]] std::vector<DownloadRecord> downloadsSnapshot() const;

    // Deletes a row and its package file. A row that is downloading stays.
    void removeDownload(int index);

  private:
    void runUpdate();                      // worker
    void report(const UpdateEvent& event); // worker; the only way in which a run changes progress_, but for its bytes

    const std::string manifestUrl_;
    const std::string downloadsDirectory_;
    const ArtifactAuthenticity authenticity_;

    mutable std::mutex mutex_; // guards progress_
    InstallProgress progress_;

    RunStop stop_;
    std::atomic<bool> workerFinished_ = false; // set by the worker's last act
    std::thread worker_;                       // frame thread only
    std::string shownMessage_;                 // frame thread only: what statusMessage returned last
};
