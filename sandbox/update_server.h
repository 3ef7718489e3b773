#pragma once

// The update server: a directory of static files over TLS on loopback, as any static host would serve them, and the
// faults of one. Faults may be changed while it runs; they count for requests that come afterwards.

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "sandbox/certificate_authority.h"

struct UpdateServerFaults {
    std::map<std::string, int> status; // by the last part of the path: answered with this status and a short body
    std::string suffix = ".container"; // the other faults are for files whose names end so
    int delayMilliseconds = 0;         // before the answer begins
    int kibPerSecond = 0;              // 0: as fast as it goes
    std::int64_t closeAfter = -1;      // the connection ends after so many bytes of the promised length
    std::int64_t stallAfter = -1;      // nothing more comes after so many bytes
    std::string holdFolder;            // while it has a file "manifest", "package" or "statement", that is held up
    std::int64_t corruptAt = -1;       // the byte at this offset arrives with all its bits flipped
};

class UpdateServer {
  public:
    // Serves `directory`, which need not exist yet, at 127.0.0.1.
    UpdateServer(const CertificateAuthority& authority, std::string directory);
    ~UpdateServer();
    UpdateServer(const UpdateServer&) = delete;
    UpdateServer& operator=(const UpdateServer&) = delete;

    int port() const;            // below 1: none could be had
    std::string baseUrl() const; // https://127.0.0.1:<port>

    void setFaults(const UpdateServerFaults& faults);

    // One line per request, in order: "200 /linux/manifest.json".
    std::vector<std::string> events() const;

  private:
    struct Service;
    std::unique_ptr<Service> service_;
};
