#include "install/package_extraction.h"

#include <chrono>
#include <cstring>
#include <exception>
#include <filesystem>
#include <system_error>
#include <thread>

#include <miniz.h>

#include "install/editor_location.h"
#include "system/disk.h"

namespace fs = std::filesystem;

bool isSafeEntryName(std::string_view name) {
    constexpr std::string_view kSeparators = "/\\";
    if (name.find(':') != std::string_view::npos) return false;
    if (!name.empty() && kSeparators.find(name.front()) != std::string_view::npos) return false;
    for (;;) {
        const std::size_t end = name.find_first_of(kSeparators);
        if (name.substr(0, end) == "..") return false;
        if (end == std::string_view::npos) return true;
        name.remove_prefix(end + 1);
    }
}

namespace {

// miniz 3.1 writes every file with mode 0644. The upper half of the attributes holds a mode when the entry was made on
// Unix. Archivers that know no file type leave the type bits zero.
void applyUnixMode(const std::string& path, const mz_zip_archive_file_stat& entry) {
    constexpr unsigned kMadeOnUnix = 3, kTypeBits = 0170000, kRegular = 0100000;
    const unsigned mode = entry.m_external_attr >> 16;
    const unsigned type = mode & kTypeBits;
    if (entry.m_version_made_by >> 8 != kMadeOnUnix || mode == 0 || (type != 0 && type != kRegular)) return;
    std::error_code ignored;
    fs::permissions(path, static_cast<fs::perms>((mode & 0755) | 0600), ignored);
}

// miniz 3.1 cuts a name at 511 bytes, and its C text ends at a zero byte. It also reports success for an entry that has
// no data although its size or checksum says otherwise.
bool isWholeEntry(mz_zip_archive& archive, mz_uint index, const mz_zip_archive_file_stat& entry) {
    const std::size_t fullSize = mz_zip_reader_get_filename(&archive, index, nullptr, 0);
    if (std::strlen(entry.m_filename) + 1 != fullSize) return false;
    return entry.m_comp_size != 0 || (entry.m_uncomp_size == 0 && entry.m_crc32 == 0);
}

bool extractEntry(mz_zip_archive& archive, mz_uint index, const fs::path& stagingDirectory) {
    mz_zip_archive_file_stat entry;
    if (!mz_zip_reader_file_stat(&archive, index, &entry)) return false;
    if (!isWholeEntry(archive, index, entry)) return false;
    const std::string_view name(entry.m_filename);
    if (name.empty() || name.back() == '/') return true;
    if (!isSafeEntryName(name)) return false;
    fs::path destination;
    try {
        destination = stagingDirectory / name;
    } catch (const std::exception&) {
        return false; // on Windows a name that is not UTF-8 has no path
    }
    std::error_code ignored; // the extraction fails when its directory is missing
    fs::create_directories(destination.parent_path(), ignored);
    const std::string destinationText = destination.string();
    if (!mz_zip_reader_extract_to_file(&archive, index, destinationText.c_str(), 0)) return false;
    applyUnixMode(destinationText, entry);
    return true;
}

// A package from a system without Unix modes must start too.
void makeEditorExecutable(const std::string& stagingDirectory) {
    for (const std::string& place : editorExecutablePlaces(stagingDirectory)) {
        std::error_code ignored;
        if (fs::is_regular_file(place, ignored))
            fs::permissions(place, fs::perms::owner_exec | fs::perms::group_exec | fs::perms::others_exec,
                            fs::perm_options::add, ignored);
    }
}

// Reads the archive for miniz until the launcher closes.
struct InterruptibleReader {
    mz_file_read_func original;
    void* originalOpaque;
    const std::atomic<bool>& closing;

    static std::size_t read(void* opaque, mz_uint64 offset, void* bytes, std::size_t count) {
        const auto* self = static_cast<const InterruptibleReader*>(opaque);
        return self->closing ? 0 : self->original(self->originalOpaque, offset, bytes, count);
    }
};

// A file that could not be removed from an earlier run's staging directory would become part of the new editor.
bool isEmptyOrMissing(const std::string& directory) {
    std::error_code error;
    return !fs::exists(directory, error) || fs::is_empty(directory, error);
}

// Deletes the target and renames the staging directory to it, once.
std::error_code replaceTarget(const std::string& stagingDirectory, const std::string& target) {
    std::error_code error;
    fs::remove_all(target, error); // a failure shows in the rename
    fs::rename(stagingDirectory, target, error);
    return error;
}

} // namespace

ExtractionOutcome extractArchive(const std::string& archivePath, const std::string& stagingDirectory,
                                 const RunStop& stop) {
    mz_zip_archive archive{};
    if (!mz_zip_reader_init_file(&archive, archivePath.c_str(), 0)) return ExtractionOutcome::Unreadable;
    InterruptibleReader reader{archive.m_pRead, archive.m_pIO_opaque, stop.closing};
    archive.m_pRead = &InterruptibleReader::read;
    archive.m_pIO_opaque = &reader;
    bool done = isEmptyOrMissing(stagingDirectory);
    const mz_uint count = mz_zip_reader_get_num_files(&archive);
    for (mz_uint index = 0; index < count && done; ++index)
        done = !stop.cancelRequested && extractEntry(archive, index, stagingDirectory);
    mz_zip_reader_end(&archive);
    if (!done) return ExtractionOutcome::Failed;
    makeEditorExecutable(stagingDirectory);
    // Sync before the swap deletes anything: after a loss of power the new files would otherwise be empty.
    return syncTree(stagingDirectory) ? ExtractionOutcome::Done : ExtractionOutcome::Failed;
}

bool swapIn(const std::string& stagingDirectory, const RunStop& stop) {
    const std::string target = managedEditorDirectory();
    std::error_code ignored;
    // Delete the marker and the executables first: a crash then never leaves a half-deleted folder that looks
    // installed. Of a symbolic link only the link is deleted, not the directory that it leads to.
    if (!fs::is_symlink(target, ignored)) {
        fs::remove(editorVersionMarkerPath(), ignored);
        for (const std::string& place : editorExecutablePlaces(target))
            fs::remove(place, ignored);
    }
    std::error_code error = replaceTarget(stagingDirectory, target);
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (error && isFileInUse(error) && !stop.closing && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        error = replaceTarget(stagingDirectory, target);
    }
    if (error) fs::remove_all(stagingDirectory, ignored);
    return !error;
}
