#pragma once

// SHA-256 of texts, streams and files. Any thread.

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <openssl/evp.h>

// The digest of bytes that arrive in pieces.
class Sha256 {
  public:
    Sha256();
    void update(const void* bytes, std::size_t count);
    [[nodiscard]] std::string finish(); // 64 lower-case hexadecimal digits, empty after a failure; call it once

  private:
    std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context_;
    bool good_;
};

// 64 lower-case hexadecimal digits, empty on failure. Reads the file 256 KiB at a time. Setting `stop` from another
// thread ends it early with an empty text.
[[nodiscard]] std::string sha256OfFile(const std::string& path, const std::atomic<bool>* stop = nullptr);

// The 32 bytes of the digest, empty on failure.
[[nodiscard]] std::vector<std::uint8_t> sha256Bytes(const std::string& text);

// Lower-case hexadecimal digits, two for each byte.
[[nodiscard]] std::string hexEncode(const unsigned char* bytes, std::size_t count);
