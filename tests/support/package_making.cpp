#include "support/package_making.h"

#include <stdexcept>

#include <miniz.h>

#include "crypto/base64.h"
#include "crypto/sha256.h"
#include "publish/container_writer.h"
#include "support/temporary_folder.h"

namespace {

std::string littleEndian(std::uint64_t value, int bytes) {
    std::string text;
    for (int i = 0; i < bytes; ++i)
        text += static_cast<char>(value >> 8 * i & 0xFF);
    return text;
}

std::string deflate(const std::string& data) {
    std::string out(data.size() + 1024, '\0');
    out.resize(tdefl_compress_mem_to_mem(out.data(), out.size(), data.data(), data.size(),
                                         static_cast<int>(TDEFL_DEFAULT_MAX_PROBES)));
    return out;
}

} // namespace

ZipEntry unixEntry(const std::string& name, const std::string& data, std::uint32_t mode) {
    return {.name = name, .data = data, .madeBy = 3 << 8 | 20, .externalAttributes = mode << 16};
}

std::string makeZip(const std::vector<ZipEntry>& entries) {
    std::string archive;
    std::string directory;
    for (const ZipEntry& entry : entries) {
        const std::string stored = entry.deflated ? deflate(entry.data) : entry.data;
        const auto* bytes = reinterpret_cast<const unsigned char*>(entry.data.data());
        const auto crc = static_cast<std::uint32_t>(mz_crc32(MZ_CRC32_INIT, bytes, entry.data.size()));
        const std::uint64_t offset = archive.size();
        const std::string sizes64 = littleEndian(entry.data.size(), 8) + littleEndian(stored.size(), 8);
        const std::string sizes32 =
            entry.zip64 ? std::string(8, '\xFF') : littleEndian(stored.size(), 4) + littleEndian(entry.data.size(), 4);
        // Both headers contain these fields: version needed, flags, method, time, date, checksum, sizes.
        const std::string common = littleEndian(entry.zip64 ? 45 : 20, 4) + littleEndian(entry.deflated ? 8 : 0, 2) +
                                   littleEndian(0x5B210000, 4) + littleEndian(entry.claimedCrc.value_or(crc), 4) +
                                   sizes32;
        const std::string localExtra = entry.zip64 ? littleEndian(1, 2) + littleEndian(16, 2) + sizes64 : "";
        const std::string directoryExtra =
            entry.zip64 ? littleEndian(1, 2) + littleEndian(24, 2) + sizes64 + littleEndian(offset, 8) : "";

        archive += "PK\3\4" + common + littleEndian(entry.name.size(), 2) + littleEndian(localExtra.size(), 2);
        archive += entry.name + localExtra + stored;

        directory += "PK\1\2" + littleEndian(entry.madeBy, 2) + common;
        directory += littleEndian(entry.name.size(), 2) + littleEndian(directoryExtra.size(), 2);
        directory += std::string(6, '\0') + littleEndian(entry.externalAttributes, 4);
        directory += entry.zip64 ? std::string(4, '\xFF') : littleEndian(offset, 4);
        directory += entry.name + directoryExtra;
    }
    const std::string count = littleEndian(entries.size(), 2);
    return archive + directory + std::string("PK\5\6\0\0\0\0", 8) + count + count + littleEndian(directory.size(), 4) +
           littleEndian(archive.size(), 4) + littleEndian(0, 2);
}

std::string sha256Hex(const std::string& bytes) {
    const std::vector<std::uint8_t> digest = sha256Bytes(bytes);
    return hexEncode(digest.data(), digest.size());
}

std::string toBase64(const std::string& bytes) {
    return base64Encode(bytes);
}

std::string sealContainer(const std::string& plaintext, const std::string& key) {
    const TemporaryFolder folder;
    const std::string sealed = (folder / "sealed").string();
    WrittenPackage written;
    std::string failure;
    if (!sealPackage(folder.write("plain", plaintext).string(), sealed, key, written, failure))
        throw std::runtime_error(failure);
    return readFileBytes(sealed);
}

std::vector<PublisherKey> publisherKeys(const std::vector<std::string>& names, const TemporaryFolder& folder) {
    std::vector<PublisherKey> keys;
    std::vector<std::string> warnings;
    std::string ignored, failure;
    for (const std::string& name : names) {
        const std::string file = (folder / (name + ".key")).string();
        (void)makeKeyFile(file, false, ignored, failure);
        if (!keys.emplace_back().read(file, warnings, failure)) throw std::runtime_error(failure);
    }
    return keys;
}
