#pragma once

// A certificate authority for one run. It issues the certificates of the sandbox's and the tests' servers; the trust
// store of the launcher gets its root certificate. Any thread after construction.

#include <string>
#include <vector>

struct ServerCertificateRequest {
    std::vector<std::string> dnsNames;    // subject alternative names
    std::vector<std::string> ipAddresses; // subject alternative names
    std::string commonName;
    int validFromDays = -1; // relative to now; both are negative for an expired certificate
    int validToDays = 30;
    bool selfSigned = false; // not signed by the authority
};

struct ServerIdentity {
    std::string certificatePem;
    std::string privateKeyPem;
};

class CertificateAuthority {
  public:
    CertificateAuthority();

    // Writes the root certificate as PEM, for SSL_CERT_FILE. False when the file could not be written.
    [[nodiscard]] bool writeRoot(const std::string& path) const;

    [[nodiscard]] ServerIdentity issue(const ServerCertificateRequest& request) const;

  private:
    std::string rootPem_;
    std::string rootKeyPem_;
};
