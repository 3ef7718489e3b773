#include "install/archive_plan.h"

#include <cstring>
#include <exception>
#include <string_view>
#include <unordered_set>

#include "install/package_extraction.h"

namespace fs = std::filesystem;

namespace {

// miniz 3.1 cuts a name at 511 bytes, and its C text ends at a zero byte. It also reports success for an entry that has
// no data although its size or checksum says otherwise.
bool isWholeEntry(mz_zip_archive& archive, mz_uint index, const mz_zip_archive_file_stat& entry) {
    const std::size_t fullSize = mz_zip_reader_get_filename(&archive, index, nullptr, 0);
    if (std::strlen(entry.m_filename) + 1 != fullSize) return false;
    return entry.m_comp_size != 0 || (entry.m_uncomp_size == 0 && entry.m_crc32 == 0);
}

// The mode that an entry made on Unix has in the upper half of its attributes. Archivers that know no file type leave
// the type bits zero.
fs::perms modeOf(const mz_zip_archive_file_stat& entry) {
    constexpr unsigned kMadeOnUnix = 3, kTypeBits = 0170000, kRegular = 0100000;
    const unsigned mode = entry.m_external_attr >> 16;
    const unsigned type = mode & kTypeBits;
    if (entry.m_version_made_by >> 8 != kMadeOnUnix || mode == 0 || (type != 0 && type != kRegular))
        return fs::perms::unknown;
    return static_cast<fs::perms>((mode & 0755) | 0600);
}

// Equal for all names that some file system takes for the same path: case, repeated separators, "." parts, and trailing
// dots and blanks do not count, and letters outside ASCII are all alike.
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

// Remembers paths and tells when a new one meets an earlier one.
class MeetingNames {
  public:
    bool add(std::string_view name) {
        const std::string key = meetingKey(name);
        // Windows gives a long name a second, short one with a tilde.
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
            plan.endsAtBadEntry = true; // on Windows a name that is not UTF-8 has no path
            return plan;
        }
        plan.needsOrder = names.add(name) || plan.needsOrder;
    }
    return plan;
}
