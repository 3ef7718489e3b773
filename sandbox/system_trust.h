#pragma once

// Makes this program, and every one that it starts, trust an authority for as long as the object lives, by way of the
// operating system's trust store: SSL_CERT_FILE on Linux, the store named "ROOT" on Windows. While no other thread
// reads the environment.
//
// That store is the user's, so on Windows proper it is left alone; under Wine, in a Windows of the sandbox's own, it is
// used.

#include <optional>
#include <string>

class SystemTrust {
  public:
    explicit SystemTrust(const std::string& rootFile); // a certificate in PEM
    ~SystemTrust();
    SystemTrust(const SystemTrust&) = delete;
    SystemTrust& operator=(const SystemTrust&) = delete;

    // False: refused, or there is no such file.
    [[nodiscard]] bool isTrusted() const { return trusted_; }

  private:
    bool trusted_ = false;
#ifdef _WIN32
    std::string certificate_; // in DER
#else
    std::optional<std::string> before_;
#endif
};
