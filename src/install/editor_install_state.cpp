#include "install/editor_install_state.h"

#include <chrono>
#include <filesystem>
#include <system_error>

#include "install/update_pipeline.h"
#include "system/frame_wake.h"

using std::chrono::steady_clock;

static constexpr std::chrono::milliseconds kProgressPeriod{33}; // a download causes at most 30 frames per second

EditorInstallState::EditorInstallState(const std::string& manifestUrl, const std::string& downloadsDirectory,
                                       const ArtifactAuthenticity& authenticity, const InstallProgress& initial)
    : manifestUrl_(manifestUrl)
    , downloadsDirectory_(downloadsDirectory)
    , authenticity_(authenticity)
    , progress_(initial) {}

EditorInstallState::~EditorInstallState() {
    stop_.close();
    if (worker_.joinable()) worker_.join();
}

void EditorInstallState::startUpdate() {
    const EditorInstallStatus current = status();
    if (current >= EditorInstallStatus::Checking && current <= EditorInstallStatus::Installing) return;
    if (worker_.joinable()) worker_.join();
    // Clear the previous worker's flag. Otherwise joinIfFinished would block until the new worker ends.
    workerFinished_ = false;
    stop_.clearCancel();
    report({UpdateEvent::Started});
    worker_ = std::thread([this] {
        runUpdate();
        workerFinished_ = true;
        wakeFrame();
    });
}

void EditorInstallState::requestCancel() {
    stop_.cancel();
}

void EditorInstallState::joinIfFinished() {
    if (workerFinished_.exchange(false) && worker_.joinable()) worker_.join();
}

EditorInstallStatus EditorInstallState::status() const {
    const std::lock_guard lock(mutex_);
    return progress_.status;
}

std::int64_t EditorInstallState::downloadedBytes() const {
    const std::lock_guard lock(mutex_);
    return progress_.downloadedBytes;
}

std::int64_t EditorInstallState::totalBytes() const {
    const std::lock_guard lock(mutex_);
    return progress_.totalBytes;
}

const std::string& EditorInstallState::statusMessage() {
    const std::lock_guard lock(mutex_);
    shownMessage_ = progress_.statusMessage;
    return shownMessage_;
}

std::vector<DownloadRecord> EditorInstallState::downloadsSnapshot() const {
    const std::lock_guard lock(mutex_);
    return progress_.downloads;
}

void EditorInstallState::removeDownload(int index) {
    std::string filePath;
    {
        const std::lock_guard lock(mutex_);
        std::vector<DownloadRecord>& rows = progress_.downloads;
        if (index < 0 || static_cast<std::size_t>(index) >= rows.size()) return;
        const auto row = rows.begin() + index;
        if (row->status == DownloadStatus::Downloading) return;
        filePath = row->filePath;
        rows.erase(row);
    }
    std::error_code ignored;
    if (!filePath.empty()) std::filesystem::remove(filePath, ignored);
}

void EditorInstallState::runUpdate() {
    const auto onProgress = [this, shown = steady_clock::time_point()](std::int64_t received,
                                                                       std::int64_t total) mutable {
        {
            const std::lock_guard lock(mutex_);
            recordBytes(progress_, received, total);
        }
        const auto now = steady_clock::now();
        if (now - shown < kProgressPeriod) return;
        shown = now;
        wakeFrame();
    };
    const auto onEvent = [this](const UpdateEvent& event) { report(event); };
    report(updateEditor({manifestUrl_, downloadsDirectory_, authenticity_, stop_, onEvent, onProgress}));
}

void EditorInstallState::report(const UpdateEvent& event) {
    {
        const std::lock_guard lock(mutex_);
        recordEvent(progress_, event);
    }
    wakeFrame();
}
