#pragma once

// Makes this program and its children trust a certificate authority while this object exists. It changes the trust
// store of the system: SSL_CERT_FILE on Linux, the store "ROOT" on Windows. No other thread may read the environment
// during construction and destruction.
//
// On real Windows, "ROOT" is the user's own store and is not changed. It is changed only under Wine, in a prefix of the
// sandbox.

#include <optional>
#include <string>

class SystemTrust {
  public:
    explicit SystemTrust(const std::string& rootFile); // a certificate in PEM
    ~SystemTrust();
    SystemTrust(const SystemTrust&) = delete;
    SystemTrust& operator=(const SystemTrust&) = delete;

    // False if the certificate could not be added or the file does not exist.
    [[nodiscard]] bool isTrusted() const { return trusted_; }

  private:
    bool trusted_ = false;
#ifdef _WIN32
    std::string certificate_; // in DER
#else
    std::optional<std::string> before_; // the value of SSL_CERT_FILE
#endif
};
