#pragma once

// Makes this program and its children trust an authority while the object lives. It uses the trust store of the system:
// SSL_CERT_FILE on Linux, the store "ROOT" on Windows. No other thread may read the environment meanwhile.
//
// On real Windows "ROOT" belongs to the user and is left alone; only under Wine, in a prefix of the sandbox, it is
// changed.

#include <optional>
#include <string>

class SystemTrust {
  public:
    explicit SystemTrust(const std::string& rootFile); // a certificate in PEM
    ~SystemTrust();
    SystemTrust(const SystemTrust&) = delete;
    SystemTrust& operator=(const SystemTrust&) = delete;

    // False when the system refuses, or the file does not exist.
    [[nodiscard]] bool isTrusted() const { return trusted_; }

  private:
    bool trusted_ = false;
#ifdef _WIN32
    std::string certificate_; // in DER
#else
    std::optional<std::string> before_; // the value of SSL_CERT_FILE
#endif
};
