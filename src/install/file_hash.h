#pragma once

// SHA-256 of files, as the manifest writes it. Any thread.

#include <cstddef>
#include <memory>
#include <string>

#include <openssl/evp.h>

// The digest of bytes that come in pieces.
class Sha256 {
  public:
    Sha256();
    void update(const void* bytes, std::size_t count);
    std::string finish(); // 64 lower-case hexadecimal digits, or empty when anything failed; once

  private:
    std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context_;
    bool good_;
};

// 64 lower-case hexadecimal digits, or empty on any failure. Reads the whole file, 256 KiB at a time.
std::string sha256OfFile(const std::string& path);

// Lower-case, high nibble first.
std::string hexEncode(const unsigned char* bytes, std::size_t count);
