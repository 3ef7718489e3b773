#include "install/editor_install_state.h"

#include <filesystem>
#include <system_error>

#include "install/update_pipeline.h"

EditorInstallState::EditorInstallState(const std::string& manifestUrl, const std::string& downloadsDirectory,
                                       const ArtifactAuthenticity& authenticity)
    : manifestUrl_(manifestUrl)
    , downloadsDirectory_(downloadsDirectory)
    , authenticity_(authenticity) {}

EditorInstallState::~EditorInstallState() {
    cancelRequested_ = true;
    if (worker_.joinable()) worker_.join();
}

void EditorInstallState::startUpdate() {
    {
        const std::lock_guard lock(mutex_);
        if (status_ >= EditorInstallStatus::Checking && status_ <= EditorInstallStatus::Installing) return;
    }
    if (worker_.joinable()) worker_.join();
    // A worker shows its outcome shortly before it ends. Its end, if no frame has collected it yet, must not be taken
    // for the end of the one that starts now: joinIfFinished would then hold a frame for the whole run.
    workerFinished_ = false;
    cancelRequested_ = false;
    {
        const std::lock_guard lock(mutex_);
        status_ = EditorInstallStatus::Checking;
        statusMessage_ = "Checking for updates…";
        downloadedBytes_ = 0;
        totalBytes_ = 0;
    }
    worker_ = std::thread([this] {
        runUpdate();
        workerFinished_ = true;
    });
}

void EditorInstallState::requestCancel() {
    cancelRequested_ = true;
}

void EditorInstallState::joinIfFinished() {
    if (workerFinished_.exchange(false) && worker_.joinable()) worker_.join();
}

EditorInstallStatus EditorInstallState::status() const {
    const std::lock_guard lock(mutex_);
    return status_;
}

std::int64_t EditorInstallState::downloadedBytes() const {
    const std::lock_guard lock(mutex_);
    return downloadedBytes_;
}

std::int64_t EditorInstallState::totalBytes() const {
    const std::lock_guard lock(mutex_);
    return totalBytes_;
}

const std::string& EditorInstallState::statusMessage() {
    const std::lock_guard lock(mutex_);
    shownMessage_ = statusMessage_;
    return shownMessage_;
}

std::vector<DownloadRecord> EditorInstallState::downloadsSnapshot() const {
    const std::lock_guard lock(mutex_);
    return downloads_;
}

void EditorInstallState::removeDownload(int index) {
    std::string filePath;
    {
        const std::lock_guard lock(mutex_);
        if (index < 0 || static_cast<std::size_t>(index) >= downloads_.size()) return;
        const auto row = downloads_.begin() + index;
        if (row->status == DownloadStatus::Downloading) return;
        filePath = row->filePath;
        downloads_.erase(row);
    }
    std::error_code ignored;
    if (!filePath.empty()) std::filesystem::remove(filePath, ignored);
}

void EditorInstallState::runUpdate() {
    UpdatePipeline(*this).run();
}

void EditorInstallState::failUpdate(const std::string& message) {
    const std::lock_guard lock(mutex_);
    status_ = EditorInstallStatus::Failed;
    statusMessage_ = message;
}
