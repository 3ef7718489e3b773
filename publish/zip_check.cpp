#include "publish/zip_check.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <filesystem>
#include <set>
#include <string_view>
#include <system_error>

#include <miniz.h>
#include <rapidjson/encodings.h>
#include <rapidjson/memorystream.h>
#include <rapidjson/stringbuffer.h>

#include "install/archive_plan.h"
#include "install/editor_location.h"

namespace {

constexpr unsigned kMadeOnUnix = 3;        // a value of the upper byte of "version made by"
constexpr std::size_t kMaxPartBytes = 255; // the longest name of a file or folder on both platforms

bool isUtf8(std::string_view text) {
    rapidjson::MemoryStream in(text.data(), text.size());
    rapidjson::StringBuffer ignored;
    while (in.Tell() < text.size())
        if (!rapidjson::UTF8<>::Validate(in, ignored)) return false;
    return true;
}

// True if Windows can store a file or folder with this name and does not silently change the name.
bool isWindowsPart(const std::string& part) {
    static constexpr std::array<std::string_view, 4> kDevices = {"con", "prn", "aux", "nul"};
    static constexpr std::array<std::string_view, 2> kNumberedDevices = {"com", "lpt"};
    // The superscript digits 1, 2 and 3.
    static constexpr std::array<std::string_view, 3> kRaisedDigits = {"\xC2\xB9", "\xC2\xB2", "\xC2\xB3"};
    const auto forbidden = [](char byte) {
        return static_cast<unsigned char>(byte) < 0x20 || std::string_view("<>\"|?*").find(byte) != std::string::npos;
    };
    if (std::any_of(part.begin(), part.end(), forbidden) || part.back() == '.' || part.back() == ' ') return false;
    std::string_view stem = std::string_view(part).substr(0, part.find('.'));
    stem = stem.substr(0, stem.find_last_not_of(' ') + 1);
    const auto isOneOf = [](const auto& names, std::string_view name) {
        return std::find(names.begin(), names.end(), name) != names.end();
    };
    if (isOneOf(kDevices, stem)) return false;
    const std::string_view number = stem.substr(std::min<std::size_t>(3, stem.size()));
    const bool isNumber =
        (number.size() == 1 && number[0] >= '0' && number[0] <= '9') || isOneOf(kRaisedDigits, number);
    return !(isNumber && isOneOf(kNumberedDevices, stem.substr(0, 3)));
}

// Returns the normalised path to which an entry is extracted: parts separated by "/", without empty parts and single
// dots, in lower case for Windows. Two names with the same result are the same file.
std::string landingPlace(std::string_view name, PackagePlatform platform) {
    const bool windows = platform == PackagePlatform::Windows;
    std::string place;
    while (!name.empty()) {
        const std::size_t end = std::min(name.find_first_of(windows ? "/\\" : "/"), name.size());
        const std::string_view part = name.substr(0, end);
        if (!part.empty() && part != ".") place.append(place.empty() ? "" : "/").append(part);
        name.remove_prefix(std::min(end + 1, name.size()));
    }
    if (windows)
        for (char& byte : place)
            if (byte >= 'A' && byte <= 'Z') byte = static_cast<char>(byte - 'A' + 'a');
    return place;
}

class ArchiveCheck {
  public:
    ArchiveCheck(mz_zip_archive& archive, PackagePlatform platform, ArchiveSummary& summary, const Progress& progress)
        : archive_(archive)
        , platform_(platform)
        , summary_(summary)
        , progress_(progress) {
        mz_zip_archive_file_stat entry;
        for (mz_uint index = 0; index < mz_zip_reader_get_num_files(&archive); ++index)
            if (mz_zip_reader_file_stat(&archive, index, &entry)) totalBytes_ += entry.m_uncomp_size;
    }

    // Checks one entry. Returns what is wrong with it, or an empty text.
    std::string checkEntry(mz_uint index) {
        mz_zip_archive_file_stat entry;
        if (!mz_zip_reader_file_stat(&archive_, index, &entry)) return "its header is damaged";
        const std::string name = entry.m_filename;
        const std::size_t length = mz_zip_reader_get_filename(&archive_, index, nullptr, 0) - 1;
        if (length >= MZ_ZIP_MAX_ARCHIVE_FILENAME_SIZE) return "its name has 512 bytes or more";
        if (length != name.size()) return "its name holds a zero byte";
        if (!isUtf8(name)) return "its name is not UTF-8";
        if (!isSafeEntryName(name)) return "the launcher refuses its name (absolute, or with a colon or a part \"..\")";
        if (entry.m_is_encrypted) return "it is encrypted";
        if (!entry.m_is_supported) return "its compression method is neither stored nor deflated";
        if (name.empty() || name.back() == '/') return {}; // the launcher skips folders and entries without a name
        if (entry.m_is_directory) return "it is marked as a folder but its name does not end in \"/\"";
        if (isLink(entry)) return "it is a link, which the launcher would unpack as a plain file";
        std::string wrong = placeFile(name);
        return wrong.empty() ? extract(index, entry) : wrong;
    }

    // Returns the path of the editor's executable. Empty if the archive has none where the launcher searches.
    [[nodiscard]] std::string foundEditor() const {
        for (const std::string& place : editorExecutablePlaces({})) {
            std::string name = std::filesystem::path(place).generic_string();
            if (files_.contains(name)) return name;
        }
        return {};
    }

    // Returns a warning if entries are writable for all users; otherwise an empty text. Launchers remove this
    // permission, but other users may have changed the files before they were packed.
    [[nodiscard]] std::string writableWarning() const {
        if (writableFiles_ == 0) return {};
        return std::to_string(writableFiles_) + " entries are writable for every user, for example \"" +
               firstWritable_ + "\". Check who could change them before they were packed.";
    }

  private:
    static bool isWritableForAll(const mz_zip_archive_file_stat& entry) {
        constexpr unsigned kOthersMayWrite = 0002;
        return entry.m_version_made_by >> 8 == kMadeOnUnix && (entry.m_external_attr >> 16 & kOthersMayWrite) != 0;
    }

    static bool isLink(const mz_zip_archive_file_stat& entry) {
        constexpr unsigned kTypeBits = 0170000, kLink = 0120000;
        return entry.m_version_made_by >> 8 == kMadeOnUnix && (entry.m_external_attr >> 16 & kTypeBits) == kLink;
    }

    // True if the last part of the name is empty or ".", so that it cannot be the name of a file. In a package for
    // Windows, a backslash separates parts too.
    [[nodiscard]] bool endsInNoName(const std::string& name) const {
        const bool windows = platform_ == PackagePlatform::Windows;
        const std::size_t separator = name.find_last_of(windows ? "/\\" : "/");
        const std::string last = name.substr(separator == std::string::npos ? 0 : separator + 1);
        return last.empty() || last == ".";
    }

    std::string placeFile(const std::string& name) {
        const std::string place = landingPlace(name, platform_);
        if (place.empty() || endsInNoName(name)) return "it names no file";
        for (std::size_t start = 0, end = 0; start <= place.size(); start = end + 1) {
            end = std::min(place.find('/', start), place.size());
            const std::string part = place.substr(start, end - start);
            if (part.size() > kMaxPartBytes) return "a part of its name has more than 255 bytes";
            if (platform_ == PackagePlatform::Windows && !isWindowsPart(part)) return "Windows cannot store its name";
            if (end == place.size()) break;
            const std::string folder = place.substr(0, end);
            if (files_.contains(folder)) return "another entry has its folder's name as a file";
            folders_.insert(folder);
        }
        if (folders_.contains(place)) return "another entry has its name as a folder";
        if (!files_.insert(place).second) return "another entry is the same file";
        return {};
    }

    std::string extract(mz_uint index, const mz_zip_archive_file_stat& entry) {
        const auto discard = [](void* self, mz_uint64, const void*, std::size_t count) {
            ArchiveCheck& check = *static_cast<ArchiveCheck*>(self);
            check.doneBytes_ += count;
            if (check.progress_) check.progress_("checking the archive", check.doneBytes_, check.totalBytes_);
            return count;
        };
        // miniz 3.1 checks neither size nor CRC of an entry whose compressed size is 0.
        const bool emptyByMistake = entry.m_comp_size == 0 && entry.m_uncomp_size != 0;
        if (emptyByMistake || !mz_zip_reader_extract_to_callback(&archive_, index, discard, this, 0))
            return "it is damaged (" + std::string(mz_zip_get_error_string(mz_zip_get_last_error(&archive_))) + ")";
        ++summary_.files;
        if (isWritableForAll(entry) && writableFiles_++ == 0) firstWritable_ = entry.m_filename;
        summary_.unpackedBytes += entry.m_uncomp_size;
        return {};
    }

    mz_zip_archive& archive_;
    PackagePlatform platform_;
    ArchiveSummary& summary_;
    const Progress& progress_;
    std::uint64_t doneBytes_ = 0;
    std::uint64_t totalBytes_ = 0;
    std::size_t writableFiles_ = 0;
    std::string firstWritable_;
    std::set<std::string> files_;
    std::set<std::string> folders_; // folders that contain files
};

// Returns the index and the name of an entry for messages. Unprintable bytes are replaced with "?".
std::string entryLabel(mz_zip_archive& archive, mz_uint index) {
    char name[80];
    mz_zip_reader_get_filename(&archive, index, name, sizeof name);
    std::string label = "Entry " + std::to_string(index) + " \"" + name + "\"";
    for (char& byte : label)
        if (byte < 0x20 || byte > 0x7E) byte = '?';
    return label;
}

} // namespace

bool parsePackagePlatform(const std::string& name, PackagePlatform& platform) {
    if (name != "linux" && name != "windows") return false;
    platform = name == "linux" ? PackagePlatform::Linux : PackagePlatform::Windows;
    return true;
}

bool checkArchive(const std::string& zipPath, PackagePlatform platform, ArchiveSummary& summary,
                  std::string& failureText, const Progress& progress) {
    std::error_code error;
    if (!std::filesystem::exists(zipPath, error)) {
        failureText = zipPath + " does not exist.";
        return false;
    }
    mz_zip_archive archive{};
    if (!mz_zip_reader_init_file(&archive, zipPath.c_str(), 0)) {
        failureText = zipPath + " is not a readable zip archive.";
        return false;
    }
    ArchiveCheck check(archive, platform, summary, progress);
    std::string wrong;
    const mz_uint count = mz_zip_reader_get_num_files(&archive);
    for (mz_uint index = 0; index < count && wrong.empty(); ++index) {
        wrong = check.checkEntry(index);
        if (!wrong.empty()) wrong.insert(0, entryLabel(archive, index) + ": ").append(".");
    }
    mz_zip_reader_end(&archive);
    const std::string editor = check.foundEditor();
    if (wrong.empty() && editor.empty())
        wrong = "No editor where the launcher looks for it. The archive needs \"editor.exe\" at its root.";
    if (!wrong.empty()) {
        failureText = zipPath + ": " + wrong;
        return false;
    }
    if (const std::string warning = check.writableWarning(); !warning.empty()) summary.warnings.push_back(warning);
    if (editor.find('/') != std::string::npos)
        summary.warnings.push_back(
            "The editor is at \"" + editor +
            "\", not at the archive's root: it opens, but every update check installs it again.");
    return true;
}
