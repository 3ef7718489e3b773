#pragma once

// A certificate authority that lives for one run: the sandbox and the tests issue their servers' certificates with it
// and point the launcher's trust store at its root. Any thread after construction.

#include <string>
#include <vector>

struct ServerCertificateRequest {
    std::vector<std::string> dnsNames;    // subject alternative names
    std::vector<std::string> ipAddresses; // likewise
    std::string commonName;
    int validFromDays = -1; // relative to now; an expired one has both in the past
    int validToDays = 30;
    bool selfSigned = false; // not signed by the authority at all
};

struct ServerIdentity {
    std::string certificatePem;
    std::string privateKeyPem;
};

class CertificateAuthority {
  public:
    CertificateAuthority();

    const std::string& rootPem() const { return rootPem_; }

    // Writes the root where OpenSSL's SSL_CERT_FILE can point to. False when the file could not be written.
    [[nodiscard]] bool writeRoot(const std::string& path) const;

    ServerIdentity issue(const ServerCertificateRequest& request) const;

  private:
    std::string rootPem_;
    std::string rootKeyPem_;
};
