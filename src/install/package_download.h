#pragma once

// Brings one package file to its final path. Blocking; install worker only.
//
// Everything arrives in <packagePath>.part. Only a complete and verified file that is on the disk is renamed to
// packagePath. A part file survives no failure but that of the rename.

#include <cstdint>
#include <functional>
#include <string>

#include "install/install_progress.h"
#include "install/run_stop.h"
#include "system/http.h"

struct PackageTransfer {
    HttpsServer server;
    std::string urlPath;
    std::string sha256; // lower-case hexadecimal; empty: not verified
    std::string packagePath;
};

// Called on the worker for each piece that arrives. `total` is 0 while the size is unknown.
using TransferProgress = std::function<void(std::int64_t received, std::int64_t total)>;

// Downloaded, or the way in which the transfer failed. A cancel ends it at the next piece of data.
[[nodiscard]] UpdateEvent::Kind downloadPackage(const PackageTransfer& transfer, const RunStop& stop,
                                                const TransferProgress& onProgress);
