#pragma once

// The update server: serves a directory of static files over TLS on loopback, with faults on demand. Faults can be
// changed while it runs and apply to later requests. Any thread.

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "sandbox/certificate_authority.h"

struct UpdateServerFaults {
    std::map<std::string, int> status; // file name to status: answered with that status and a short body
    std::string suffix = ".container"; // the faults below apply to files whose names end so
    int delayMilliseconds = 0;         // before the answer begins
    int kibPerSecond = 0;              // 0: no limit
    std::int64_t closeAfter = -1;      // ends the connection after so many bytes
    std::int64_t stallAfter = -1;      // sends nothing more after so many bytes
    std::string holdFolder;            // while it contains a file "manifest", "package" or "statement", that is delayed
    std::int64_t corruptAt = -1;       // inverts the byte at this offset
};

class UpdateServer {
  public:
    // Serves `directory` at 127.0.0.1. The directory may be created later.
    UpdateServer(const CertificateAuthority& authority, std::string directory);
    ~UpdateServer();
    UpdateServer(const UpdateServer&) = delete;
    UpdateServer& operator=(const UpdateServer&) = delete;

    [[nodiscard]] int port() const;            // 0 when no port was free
    [[nodiscard]] std::string baseUrl() const; // https://127.0.0.1:<port>

    void setFaults(const UpdateServerFaults& faults);

    // One line per request, in order: "200 /linux/manifest.json".
    [[nodiscard]] std::vector<std::string> events() const;

  private:
    struct Service;
    std::unique_ptr<Service> service_;
};
