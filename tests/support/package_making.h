#pragma once

// Editor packages, written byte by byte so that a test can also write them wrong: zip archives, encrypted containers,
// release statements. Shares no code with what reads them.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

struct ZipEntry {
    std::string name;
    std::string data;
    bool deflated = false;
    std::uint16_t madeBy = 20; // upper byte 3: made on Unix, and the mode is in the upper half of the attributes
    std::uint32_t externalAttributes = 0;
    bool sizesBehindData = false; // in a data descriptor
    bool zip64 = false;           // sizes and offset in the 64-bit extra field
    std::optional<std::uint32_t> claimedCrc = std::nullopt;
};

// An entry as an archiver on Unix writes it; `mode` includes the file type.
ZipEntry unixEntry(const std::string& name, const std::string& data, std::uint32_t mode);

std::string makeZip(const std::vector<ZipEntry>& entries);

std::string sha256Hex(const std::string& bytes);
std::string toBase64(const std::string& bytes);

// `key` is 32 bytes. The nonce is fixed: these containers keep no secret.
std::string sealContainer(const std::string& plaintext, const std::string& key);

// An Ed25519 key from a 32-byte seed.
class SigningKey {
  public:
    explicit SigningKey(char seedByte)
        : seed_(32, seedByte) {}
    std::string publicKey() const; // 32 bytes
    std::string sign(const std::string& text) const;

  private:
    std::string seed_;
};
