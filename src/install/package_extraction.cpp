#include "install/package_extraction.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <filesystem>
#include <system_error>
#include <thread>
#include <unordered_set>
#include <vector>

#include <miniz.h>

#include "install/archive_plan.h"
#include "install/editor_location.h"
#include "system/disk.h"

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kMostThreads = 4;

// The zip reader of one thread. Its reads fail when the launcher closes, so that the extraction ends soon.
class ArchiveReader {
  public:
    ArchiveReader(const std::string& path, const std::atomic<bool>& closing)
        : closing_(closing)
        , isOpen_(mz_zip_reader_init_file(&archive_, path.c_str(), 0) != 0) {
        read_ = archive_.m_pRead;
        readOpaque_ = archive_.m_pIO_opaque;
        archive_.m_pRead = &ArchiveReader::readUnlessClosing;
        archive_.m_pIO_opaque = this;
    }
    ~ArchiveReader() {
        if (isOpen_) mz_zip_reader_end(&archive_);
    }
    ArchiveReader(const ArchiveReader&) = delete;
    ArchiveReader& operator=(const ArchiveReader&) = delete;

    [[nodiscard]] bool isOpen() const { return isOpen_; }
    mz_zip_archive& archive() { return archive_; }

  private:
    static std::size_t readUnlessClosing(void* opaque, mz_uint64 offset, void* bytes, std::size_t count) {
        const auto* self = static_cast<const ArchiveReader*>(opaque);
        return self->closing_ ? 0 : self->read_(self->readOpaque_, offset, bytes, count);
    }

    mz_zip_archive archive_{};
    const std::atomic<bool>& closing_;
    bool isOpen_;
    mz_file_read_func read_ = nullptr;
    void* readOpaque_ = nullptr;
};

// Distributes the files of an archive to several threads, by ascending index.
class Extraction {
  public:
    Extraction(const ArchivePlan& plan, const UpdateCancellation& stop)
        : plan_(plan)
        , stop_(stop) {}

    // Runs on each thread. Extracts files until none is left or one has failed on any thread.
    void work(mz_zip_archive& archive) {
        for (;;) {
            const std::size_t next = next_++;
            if (next >= plan_.files.size() || failed_) return;
            if (stop_.cancelRequested || !extract(archive, plan_.files[next])) failed_ = true;
        }
    }

    [[nodiscard]] bool failed() const { return failed_; }

  private:
    static bool extract(mz_zip_archive& archive, const PlannedFile& file) {
        if (!mz_zip_reader_extract_to_file(&archive, file.index, file.path.c_str(), 0)) return false;
        std::error_code ignored;
        if (file.mode != fs::perms::unknown) fs::permissions(file.path, file.mode, ignored);
        return true;
    }

    const ArchivePlan& plan_;
    const UpdateCancellation& stop_;
    std::atomic<std::size_t> next_ = 0;
    std::atomic<bool> failed_ = false;
};

// Creates each directory once, before the threads start. Errors are ignored: the extraction of a file fails if its
// directory is missing.
void createDirectories(const std::vector<PlannedFile>& files) {
    std::unordered_set<std::string> created;
    for (const PlannedFile& file : files) {
        const fs::path directory = fs::path(file.path).parent_path();
        std::error_code ignored;
        if (created.insert(directory.string()).second) fs::create_directories(directory, ignored);
    }
}

// Extracts the planned files on this thread and on helper threads. Each helper opens its own reader. If a helper cannot
// start, the other threads extract all files.
bool extractFiles(ArchiveReader& reader, const std::string& archivePath, const ArchivePlan& plan,
                  const UpdateCancellation& stop) {
    Extraction extraction(plan, stop);
    const std::size_t cores = std::max(1u, std::thread::hardware_concurrency());
    const std::size_t threads = plan.needsOrder ? 1 : std::min({cores, kMostThreads, plan.files.size()});
    std::vector<std::thread> helpers;
    helpers.reserve(threads);
    try {
        while (helpers.size() + 1 < threads) {
            helpers.emplace_back([&] {
                ArchiveReader own(archivePath, stop.closing);
                if (own.isOpen()) extraction.work(own.archive());
            });
        }
    } catch (const std::system_error&) { // the system cannot create another thread
    }
    extraction.work(reader.archive());
    for (std::thread& helper : helpers)
        helper.join();
    return !extraction.failed();
}

// Makes the editor's executables executable, because a package made on Windows has no Unix modes.
void makeEditorExecutable(const std::string& stagingDirectory) {
    for (const std::string& place : editorExecutablePlaces(stagingDirectory)) {
        std::error_code ignored;
        if (fs::is_regular_file(place, ignored))
            fs::permissions(place, fs::perms::owner_exec | fs::perms::group_exec | fs::perms::others_exec,
                            fs::perm_options::add, ignored);
    }
}

// True if the staging directory is empty or does not exist. A file left by an earlier run would become part of the new
// editor.
bool isEmptyOrMissing(const std::string& directory) {
    std::error_code error;
    return !fs::exists(directory, error) || fs::is_empty(directory, error);
}

std::vector<std::string> pathsOf(const std::vector<PlannedFile>& files) {
    std::vector<std::string> paths(files.size());
    std::transform(files.begin(), files.end(), paths.begin(), [](const PlannedFile& file) { return file.path; });
    return paths;
}

} // namespace

ExtractionOutcome extractArchive(const std::string& archivePath, const std::string& stagingDirectory,
                                 const UpdateCancellation& stop) {
    ArchiveReader reader(archivePath, stop.closing);
    if (!reader.isOpen()) return ExtractionOutcome::Unreadable;
    if (!isEmptyOrMissing(stagingDirectory)) return ExtractionOutcome::Failed;
    // extractFiles checks for a cancel only before each file, so check here for an archive that contains only
    // directories. A cancel takes effect before an entry, so it has no effect on an archive without entries.
    if (stop.cancelRequested && mz_zip_reader_get_num_files(&reader.archive()) > 0) return ExtractionOutcome::Failed;
    const ArchivePlan plan = planArchive(reader.archive(), stagingDirectory);
    createDirectories(plan.files);
    if (!extractFiles(reader, archivePath, plan, stop) || plan.endsAtBadEntry) return ExtractionOutcome::Failed;
    makeEditorExecutable(stagingDirectory);
    // Sync before replaceEditor deletes the old editor. Otherwise the new files could be empty after a power failure.
    return syncFiles(pathsOf(plan.files)) ? ExtractionOutcome::Done : ExtractionOutcome::Failed;
}
