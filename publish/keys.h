#pragma once

// A publisher's Ed25519 key pair. The private key is stored in a PKCS #8 PEM file that only its owner may read. It is
// never written anywhere else and never appears in a message. Blocking; any thread.

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <openssl/evp.h>

class PublisherKey {
  public:
    // Reads a private key. Adds a warning if other users may read the file. On failure returns false and sets
    // `failureText` to a message for the user.
    [[nodiscard]] bool read(const std::string& path, std::vector<std::string>& warnings, std::string& failureText);

    [[nodiscard]] const std::string& path() const { return path_; }
    [[nodiscard]] const std::string& publicKey() const { return publicKey_; } // 32 bytes
    [[nodiscard]] std::string sign(std::string_view text) const;              // 64 bytes; empty on failure

  private:
    std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> pair_{nullptr, &EVP_PKEY_free};
    std::string path_;
    std::string publicKey_;
};

// Creates a new key pair and writes its private key. Replaces an existing file only if `overwrite` is true, after the
// new file is complete. On failure returns false and sets `failureText` to a message for the user.
[[nodiscard]] bool makeKeyFile(const std::string& path, bool overwrite, std::string& publicKey,
                               std::string& failureText);

// Returns the value of artifact_authenticity_keys for the launcher's configuration. Each key has 32 bytes.
[[nodiscard]] std::string publisherKeysText(const std::vector<std::string>& publicKeys);
