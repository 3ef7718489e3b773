#pragma once

// A certificate authority for one run. It issues the certificates for the servers of the sandbox and of the tests. The
// launcher trusts its root certificate. Any thread after construction.

#include <string>
#include <vector>

struct ServerCertificateRequest {
    std::vector<std::string> dnsNames;    // subject alternative names
    std::vector<std::string> ipAddresses; // subject alternative names
    std::string commonName;
    int validFromDays = -1; // relative to now; if validToDays is negative too, the certificate has expired
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

    // Writes the root certificate as PEM, for SSL_CERT_FILE. False if the file cannot be written.
    [[nodiscard]] bool writeRoot(const std::string& path) const;

    [[nodiscard]] ServerIdentity issue(const ServerCertificateRequest& request) const;

  private:
    std::string rootPem_;
    std::string rootKeyPem_;
};
