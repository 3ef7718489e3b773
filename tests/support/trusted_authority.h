#pragma once

// A certificate authority that this process trusts while the object lives, and the servers on loopback it vouches for.
// Only while no other thread of the test reads the environment.

#include <optional>
#include <stdexcept>

#include "sandbox/certificate_authority.h"
#include "sandbox/system_trust.h"
#include "support/temporary_folder.h"

class TrustedAuthority {
  public:
    TrustedAuthority() {
        if (!authority().writeRoot(rootFile())) throw std::runtime_error("cannot write " + rootFile());
        trust_.emplace(rootFile());
        if (!trust_->isTrusted()) throw std::runtime_error("the system does not take " + rootFile());
    }

    // One authority and one good certificate for all: keys take their time.
    static const CertificateAuthority& authority() {
        static const CertificateAuthority one;
        return one;
    }
    static const ServerIdentity& loopback() {
        static const ServerIdentity one = authority().issue({{"localhost"}, {"127.0.0.1"}, "a server"});
        return one;
    }
    std::string rootFile() const { return (folder_ / "root.pem").string(); }

  private:
    TemporaryFolder folder_;
    std::optional<SystemTrust> trust_;
};
