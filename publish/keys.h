#pragma once

// A publisher's Ed25519 key pair. The private half lives in a PKCS #8 PEM file that only its owner may read, as every
// tool for such keys takes it; it is never written anywhere else, nor put into a text for people.

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <openssl/evp.h>

class PublisherKey {
  public:
    // False leaves words for the user in `failureText`. A file that others may read works, with a warning.
    [[nodiscard]] bool read(const std::string& path, std::vector<std::string>& warnings, std::string& failureText);

    const std::string& path() const { return path_; }
    const std::string& publicKey() const { return publicKey_; } // 32 bytes
    std::string sign(std::string_view text) const;              // 64 bytes; empty on failure

  private:
    std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> pair_{nullptr, &EVP_PKEY_free};
    std::string path_;
    std::string publicKey_;
};

// Makes a new pair and writes the private key. An existing file is kept unless `overwrite` is set, and also then until
// the new one is complete. False leaves words for the user in `failureText`.
[[nodiscard]] bool makeKeyFile(const std::string& path, bool overwrite, std::string& publicKey,
                               std::string& failureText);

// The public keys as the launcher's configuration holds them.
std::string publisherKeysText(const std::vector<std::string>& publicKeys);
