#pragma once

// Starts and cancels the install worker, and gives the screens copies of its progress.
//
// Call all members on the main thread, except those marked "worker". The mutex is held for a few assignments or one
// copy, never during network, file or hashing work.

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "install/artifact_authenticity.h"
#include "install/download_record.h"
#include "install/install_status.h"
#include "install/update_cancellation.h"

class EditorInstallState {
  public:
    EditorInstallState(const std::string& manifestUrl, const std::string& downloadsDirectory,
                       const ArtifactAuthenticity& authenticity = {}, const InstallProgress& initial = {});
    ~EditorInstallState(); // stops the run and joins the worker; cannot interrupt decryption, removal, rename or sync
    EditorInstallState(const EditorInstallState&) = delete;
    EditorInstallState& operator=(const EditorInstallState&) = delete;

    void startUpdate();    // does nothing while a run is active
    void requestCancel();  // aborts a download, an extraction or a wait for a lock; other steps finish first
    void joinIfFinished(); // call once per frame; does not block

    [[nodiscard]] bool isRunning() const { return worker_.joinable(); } // until the worker has been joined
    [[nodiscard]] EditorInstallStatus status() const;
    [[nodiscard]] std::int64_t downloadedBytes() const;
    [[nodiscard]] std::int64_t totalBytes() const;
    [[nodiscard]] const std::string& statusMessage(); // the next call changes the text
    [[nodiscard]] std::vector<DownloadRecord> downloadsSnapshot() const;

    // Deletes a row and its package file. Does nothing if the row's download is still active.
    void removeDownload(int index);

  private:
    void runUpdate();                      // worker
    void report(const UpdateEvent& event); // main thread or worker; applies the event to progress_

    const std::string manifestUrl_;
    const std::string downloadsDirectory_;
    const ArtifactAuthenticity authenticity_;

    mutable std::mutex mutex_; // guards progress_
    InstallProgress progress_;

    UpdateCancellation stop_;
    std::atomic<bool> workerFinished_ = false; // set by the worker at its end
    std::thread worker_;                       // main thread only
    std::string shownMessage_;                 // main thread only; the text that statusMessage returned last
};
