#include "install/package_download.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string_view>
#include <system_error>

#include "crypto/sha256.h"
#include "system/disk.h"

namespace {

// The part file of a download. Data arrives in pieces of up to 16 KiB; the class collects up to 256 KiB for each write.
class PartFile {
  public:
    explicit PartFile(const std::string& path) {
        stream_.rdbuf()->pubsetbuf(nullptr, 0);
        stream_.open(path, std::ios::binary | std::ios::trunc);
        gathered_.reserve(kGatherBytes);
    }

    [[nodiscard]] bool write(std::string_view data) {
        if (gathered_.size() + data.size() > kGatherBytes) flush();
        gathered_ += data;
        return good();
    }

    void flush() {
        stream_.write(gathered_.data(), static_cast<std::streamsize>(gathered_.size()));
        size_ += gathered_.size();
        gathered_.clear();
        stream_.flush();
    }

    [[nodiscard]] std::uint64_t size() const { return size_; } // without collected data that is not written yet
    [[nodiscard]] bool isOpen() const { return stream_.is_open(); }
    [[nodiscard]] bool good() const { return !stream_.fail(); }
    void close() { stream_.close(); }

  private:
    static constexpr std::size_t kGatherBytes = 262144;

    std::ofstream stream_;
    std::string gathered_;
    std::uint64_t size_ = 0;
};

UpdateEvent::Kind receiveIntoPart(const PackageTransfer& transfer, const std::string& partPath,
                                  const UpdateCancellation& stop, const TransferProgress& onProgress) {
    PartFile part(partPath);
    if (!part.isOpen()) return UpdateEvent::DownloadsNotWritable;
    std::optional<GrowingFileSha256> digest;
    if (!transfer.sha256.empty()) digest.emplace(partPath, &stop.closing);
    const auto receive = [&](const char* data, std::size_t size) {
        if (stop.cancelRequested || !part.write({data, size})) return false;
        if (digest) digest->grewTo(part.size());
        return true;
    };
    const auto progress = [&](std::int64_t received, std::int64_t total) {
        onProgress(received, total);
        return !stop.cancelRequested;
    };
    const HttpsAnswer answer = httpsDownload(transfer.server, transfer.urlPath, receive, progress);
    // Check for errors after the flush and ignore the result of the close: the flush has passed all data to the system.
    part.flush();
    const bool written = part.good();
    part.close();

    if (stop.cancelRequested) return UpdateEvent::DownloadCancelled;
    // `receive` also writes the body of a response whose status is not 200, for example an error page.
    if (!answer.answered || answer.status != 200 || !written) return UpdateEvent::DownloadFailed;
    if (digest && digest->finish() != transfer.sha256) return UpdateEvent::ChecksumDiffers;
    // Sync before the rename. Otherwise the file with the final name could be empty after a power failure.
    if (!syncFile(partPath)) return UpdateEvent::DownloadFailed;
    return UpdateEvent::Downloaded;
}

} // namespace

UpdateEvent::Kind downloadPackage(const PackageTransfer& transfer, const UpdateCancellation& stop,
                                  const TransferProgress& onProgress) {
    const std::string partPath = transfer.packagePath + ".part";
    const UpdateEvent::Kind received = receiveIntoPart(transfer, partPath, stop, onProgress);
    std::error_code error;
    if (received == UpdateEvent::Downloaded) {
        std::filesystem::rename(partPath, transfer.packagePath, error);
        return error ? UpdateEvent::DownloadNotFinalized : UpdateEvent::Downloaded;
    }
    if (received != UpdateEvent::DownloadsNotWritable) std::filesystem::remove(partPath, error);
    return received;
}
