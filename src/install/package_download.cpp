#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>

#include "crypto/sha256.h"
#include "install/update_pipeline.h"
#include "system/http.h"

namespace {

// The part file. What arrives comes in pieces of 16 KiB at most; they are written together.
class PartFile {
  public:
    explicit PartFile(const std::string& path) {
        stream_.rdbuf()->pubsetbuf(nullptr, 0);
        stream_.open(path, std::ios::binary | std::ios::trunc);
        gathered_.reserve(kGatherBytes);
    }

    bool write(std::string_view data) {
        if (gathered_.size() + data.size() > kGatherBytes) flush();
        gathered_ += data;
        return good();
    }

    void flush() {
        stream_.write(gathered_.data(), static_cast<std::streamsize>(gathered_.size()));
        gathered_.clear();
        stream_.flush();
    }

    [[nodiscard]] bool isOpen() const { return stream_.is_open(); }
    [[nodiscard]] bool good() const { return !stream_.fail(); }
    void close() { stream_.close(); }

  private:
    static constexpr std::size_t kGatherBytes = 262144;

    std::ofstream stream_;
    std::string gathered_;
};

} // namespace

bool UpdatePipeline::downloadPackage() {
    const std::string partPath = packagePath_ + ".part";
    {
        const std::lock_guard lock(state_.mutex_);
        state_.status_ = EditorInstallStatus::Downloading;
        state_.statusMessage_ = "Downloading editor " + manifest_.version + "…";
        state_.downloadedBytes_ = 0;
        state_.totalBytes_ = 0;
        DownloadRecord row;
        row.version = manifest_.version;
        row.filePath = packagePath_;
        state_.downloads_.insert(state_.downloads_.begin(), row);
    }
    PartFile part(partPath);
    if (!part.isOpen()) {
        state_.failUpdate("Could not write to the downloads directory.");
        return false;
    }
    const auto receive = [&](const char* data, std::size_t size) {
        return !state_.cancelRequested_ && part.write({data, size});
    };
    const auto progress = [&](std::int64_t received, std::int64_t total) {
        const std::lock_guard lock(state_.mutex_);
        state_.downloadedBytes_ = received;
        state_.totalBytes_ = total;
        if (!state_.downloads_.empty()) {
            state_.downloads_.front().downloadedBytes = received;
            state_.downloads_.front().totalBytes = total;
        }
        return !state_.cancelRequested_;
    };
    const HttpsAnswer answer = httpsDownload({packageHost_, packagePort_, 120}, packageUrlPath_, receive, progress);
    // What the close itself says does not count: everything has been handed to the system by then.
    part.flush();
    const bool written = part.good();
    part.close();

    if (state_.cancelRequested_) {
        failTransfer(partPath, "Download cancelled.");
        return false;
    }
    // The body of any other answer has gone to the part file as well; only the status tells.
    if (!answer.answered || answer.status != 200 || !written) {
        failTransfer(partPath, "The editor package download failed.");
        return false;
    }
    if (!manifest_.sha256.empty() && sha256OfFile(partPath) != manifest_.sha256) {
        failTransfer(partPath, "The downloaded package failed its checksum verification.");
        return false;
    }
    std::error_code error;
    std::filesystem::rename(partPath, packagePath_, error);
    if (error) {
        state_.failUpdate("Could not finalize the downloaded package.");
        return false;
    }
    const std::lock_guard lock(state_.mutex_);
    state_.downloads_.front().status = DownloadStatus::Downloaded;
    return true;
}

// The newest row is the one of this transfer: rows are added in front, and one that is being downloaded stays.
void UpdatePipeline::failTransfer(const std::string& partPath, const std::string& message) {
    std::error_code ignored;
    std::filesystem::remove(partPath, ignored);
    const std::lock_guard lock(state_.mutex_);
    state_.downloads_.front().status = DownloadStatus::Failed;
    state_.status_ = EditorInstallStatus::Failed;
    state_.statusMessage_ = message;
}
