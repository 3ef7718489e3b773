#pragma once

// Computes the SHA-256 of texts, streams and files. Any thread.

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <openssl/evp.h>

// Computes the digest of data that arrives in pieces.
class Sha256 {
  public:
    Sha256();
    void update(const void* bytes, std::size_t count);
    [[nodiscard]] std::string finish(); // returns 64 lower-case hexadecimal digits, empty after a failure; call once

  private:
    std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context_;
    bool good_;
};

// Returns the digest of a file as 64 lower-case hexadecimal digits; empty on failure. Reads the file 256 KiB at a time.
// If another thread sets `stop`, it ends early and returns an empty text.
[[nodiscard]] std::string sha256OfFile(const std::string& path, const std::atomic<bool>* stop = nullptr);

// Returns the 32 bytes of the digest of `text`; empty on failure.
[[nodiscard]] std::vector<std::uint8_t> sha256Bytes(const std::string& text);

// Returns two lower-case hexadecimal digits for each byte.
[[nodiscard]] std::string hexEncode(const unsigned char* bytes, std::size_t count);
