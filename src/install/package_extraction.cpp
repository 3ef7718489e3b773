#include "install/package_extraction.h"

#include <exception>
#include <filesystem>
#include <system_error>

#include <miniz.h>

#include "install/editor_location.h"

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
    fs::permissions(path, static_cast<fs::perms>((mode & 0777) | 0600), ignored);
}

bool extractEntry(mz_zip_archive& archive, mz_uint index, const fs::path& stagingDirectory) {
    mz_zip_archive_file_stat entry;
    if (!mz_zip_reader_file_stat(&archive, index, &entry)) return false;
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

} // namespace

ExtractionOutcome extractArchive(const std::string& archivePath, const std::string& stagingDirectory,
                                 const std::atomic<bool>& cancelRequested) {
    mz_zip_archive archive{};
    if (!mz_zip_reader_init_file(&archive, archivePath.c_str(), 0)) return ExtractionOutcome::Unreadable;
    bool done = true;
    const mz_uint count = mz_zip_reader_get_num_files(&archive);
    for (mz_uint index = 0; index < count && done; ++index)
        done = !cancelRequested && extractEntry(archive, index, stagingDirectory);
    mz_zip_reader_end(&archive);
    if (!done) return ExtractionOutcome::Failed;
    makeEditorExecutable(stagingDirectory);
    return ExtractionOutcome::Done;
}

bool swapIn(const std::string& stagingDirectory) {
    const std::string target = managedEditorDirectory();
    std::error_code ignored;
    // Delete the marker and the executables first: a crash then never leaves a half-deleted folder that looks
    // installed. Of a symbolic link only the link is deleted, not the directory that it leads to.
    if (!fs::is_symlink(target, ignored)) {
        fs::remove(editorVersionMarkerPath(), ignored);
        for (const std::string& place : editorExecutablePlaces(target))
            fs::remove(place, ignored);
    }
    fs::remove_all(target, ignored);
    std::error_code error;
    fs::rename(stagingDirectory, target, error);
    if (error) fs::remove_all(stagingDirectory, ignored);
    return !error;
}
