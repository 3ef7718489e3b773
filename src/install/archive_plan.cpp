#include "install/archive_plan.h"

#include <cstring>
#include <exception>
#include <unordered_set>

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

// False if the entry is damaged in a way that miniz 3.1 does not report: the name is longer than 511 bytes or contains
// a zero byte (miniz cuts the name there), or the entry has no data although its size or checksum is not zero.
bool isWholeEntry(mz_zip_archive& archive, mz_uint index, const mz_zip_archive_file_stat& entry) {
    const std::size_t fullSize = mz_zip_reader_get_filename(&archive, index, nullptr, 0);
    if (std::strlen(entry.m_filename) + 1 != fullSize) return false;
    return entry.m_comp_size != 0 || (entry.m_uncomp_size == 0 && entry.m_crc32 == 0);
}

// Returns the entry's permissions, limited to 0755 and always with 0600. Returns `unknown` if the entry was not made on
// Unix, has no mode, or is not a regular file. Some archivers leave the type bits zero; such an entry counts as a
// regular file.
fs::perms modeOf(const mz_zip_archive_file_stat& entry) {
    constexpr unsigned kMadeOnUnix = 3, kTypeBits = 0170000, kRegular = 0100000;
    const unsigned mode = entry.m_external_attr >> 16;
    const unsigned type = mode & kTypeBits;
    if (entry.m_version_made_by >> 8 != kMadeOnUnix || mode == 0 || (type != 0 && type != kRegular))
        return fs::perms::unknown;
    return static_cast<fs::perms>((mode & 0755) | 0600);
}

// Returns a key that is equal for two names if any file system could treat them as the same path. The key ignores case,
// repeated separators, "." parts, and dots and spaces at the end of a part. All sequences of non-ASCII bytes count as
// equal.
std::string meetingKey(std::string_view name) {
    std::string key;
    const auto endPart = [&] {
        while (!key.empty() && (key.back() == '.' || key.back() == ' '))
            key.pop_back();
    };
    for (const char byte : name) {
        const auto code = static_cast<unsigned char>(byte);
        if (byte == '/' || byte == '\\') {
            endPart();
            if (!key.empty() && key.back() != '/') key += '/';
        } else if (code >= 0x80) {
            if (key.empty() || key.back() != '?') key += '?';
        } else {
            key += byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte - 'A' + 'a') : byte;
        }
    }
    endPart();
    if (!key.empty() && key.back() == '/') key.pop_back();
    return key;
}

// Collects the entry names of an archive. add() returns true if the name may be the same path as an earlier name, or if
// one of the two may be a parent directory of the other.
class MeetingNames {
  public:
    bool add(std::string_view name) {
        const std::string key = meetingKey(name);
        // On Windows a name with a tilde may be the short (8.3) name of another file.
        bool meets =
            name.find('~') != std::string_view::npos || directories_.contains(key) || !files_.insert(key).second;
        for (std::size_t end = key.find('/'); end != std::string::npos; end = key.find('/', end + 1)) {
            directories_.insert(key.substr(0, end));
            meets = meets || files_.contains(key.substr(0, end));
        }
        return meets;
    }

  private:
    std::unordered_set<std::string> files_;
    std::unordered_set<std::string> directories_;
};

} // namespace

ArchivePlan planArchive(mz_zip_archive& archive, const fs::path& stagingDirectory) {
    ArchivePlan plan;
    MeetingNames names;
    const mz_uint count = mz_zip_reader_get_num_files(&archive);
    for (mz_uint index = 0; index < count; ++index) {
        mz_zip_archive_file_stat entry;
        plan.endsAtBadEntry = !mz_zip_reader_file_stat(&archive, index, &entry) || !isWholeEntry(archive, index, entry);
        if (plan.endsAtBadEntry) return plan;
        const std::string_view name(entry.m_filename);
        if (name.empty() || name.back() == '/') continue;
        plan.endsAtBadEntry = !isSafeEntryName(name);
        if (plan.endsAtBadEntry) return plan;
        try {
            plan.files.push_back({index, (stagingDirectory / name).string(), modeOf(entry)});
        } catch (const std::exception&) {
            plan.endsAtBadEntry = true; // on Windows, fs::path throws if the name is not UTF-8
            return plan;
        }
        plan.needsOrder = names.add(name) || plan.needsOrder;
    }
    return plan;
}
