#pragma once

// Serves a directory of static files over TLS on loopback, as the update server, and can simulate faults. Faults can be
// changed while the server runs; a change applies to later requests. Any thread.

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "sandbox/certificate_authority.h"

struct UpdateServerFaults {
    std::map<std::string, int> status; // from file name to status: the response has this status and a short body
    std::string suffix = ".container"; // the faults below apply only to file names with this suffix
    int delayMilliseconds = 0;         // before the response begins
    int kibPerSecond = 0;              // 0: no limit
    std::int64_t closeAfter = -1;      // ends the connection after this many bytes
    std::int64_t stallAfter = -1;      // sends nothing more after this many bytes
    std::string holdFolder;            // a file "manifest", "package" or "statement" in it delays that download
    std::int64_t corruptAt = -1;       // inverts the byte at this offset
};

class UpdateServer {
  public:
    // Serves `directory` at 127.0.0.1. The directory may be created later.
    UpdateServer(const CertificateAuthority& authority, std::string directory);
    ~UpdateServer();
    UpdateServer(const UpdateServer&) = delete;
    UpdateServer& operator=(const UpdateServer&) = delete;

    [[nodiscard]] int port() const;            // 0 if no port was free
    [[nodiscard]] std::string baseUrl() const; // https://127.0.0.1:<port>

    void setFaults(const UpdateServerFaults& faults);

    // Returns one line per request, in order, such as "200 /linux/manifest.json".
    [[nodiscard]] std::vector<std::string> events() const;

  private:
    struct Service;
    std::unique_ptr<Service> service_;
};
