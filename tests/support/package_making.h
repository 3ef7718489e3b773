#pragma once

// Makes editor packages for tests. Archives are written byte by byte, so that a test can also make invalid archives.
// Containers and signatures come from the publisher's own code, which tests/publish/program_test.py checks with
// independent tools.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "publish/keys.h"
#include "support/temporary_folder.h"

struct ZipEntry {
    std::string name;
    std::string data;
    bool deflated = false;
    std::uint16_t madeBy = 20; // upper byte 3: made on Unix, and the upper half of the attributes is the mode
    std::uint32_t externalAttributes = 0;
    bool zip64 = false; // sizes and offset in the 64-bit extra field
    std::optional<std::uint32_t> claimedCrc = std::nullopt;
};

// Returns an entry as an archiver on Unix writes it. `mode` includes the file type.
ZipEntry unixEntry(const std::string& name, const std::string& data, std::uint32_t mode);

std::string makeZip(const std::vector<ZipEntry>& entries);

std::string sha256Hex(const std::string& bytes);
std::string toBase64(const std::string& bytes);

// `key` has 32 bytes.
std::string sealContainer(const std::string& plaintext, const std::string& key);

// Returns the publisher's keys from the files <name>.key in `folder`. Creates the files that do not exist.
std::vector<PublisherKey> publisherKeys(const std::vector<std::string>& names = {"first"},
                                        const TemporaryFolder& folder = TemporaryFolder());
