#pragma once

// A certificate authority that this process trusts while the object exists, and a certificate for loopback servers. No
// other thread of the test may read the environment during construction and destruction.

#include <optional>
#include <stdexcept>
#include <string>

#include "sandbox/certificate_authority.h"
#include "sandbox/system_trust.h"
#include "support/temporary_folder.h"

class TrustedAuthority {
  public:
    TrustedAuthority() {
        if (!authority().writeRoot(rootFile())) throw std::runtime_error("cannot write " + rootFile());
        trust_.emplace(rootFile());
        if (!trust_->isTrusted()) throw std::runtime_error("the system does not accept " + rootFile());
    }

    // All tests share one authority and one valid certificate, because the creation of keys is slow.
    static const CertificateAuthority& authority() {
        static const CertificateAuthority one;
        return one;
    }
    static const ServerIdentity& loopback() {
        static const ServerIdentity one = authority().issue({{"localhost"}, {"127.0.0.1"}, "a server"});
        return one;
    }
    [[nodiscard]] std::string rootFile() const { return (folder_ / "root.pem").string(); }

  private:
    TemporaryFolder folder_;
    std::optional<SystemTrust> trust_;
};
