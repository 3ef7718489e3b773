#pragma once

// Downloads one package file. Blocking; install worker only.
//
// Data is written to <packagePath>.part. A complete, verified and synced file is renamed to packagePath. After a
// failure the part file is deleted, unless the rename itself failed.

#include <cstdint>
#include <functional>
#include <string>

#include "install/install_status.h"
#include "install/update_cancellation.h"
#include "system/http.h"

struct PackageTransfer {
    HttpsServer server;
    std::string urlPath;
    std::string sha256; // lower-case hexadecimal; empty: not verified
    std::string packagePath;
};

// Called on the request's thread for each piece of data, while the worker waits. `total` is 0 while the size is
// unknown.
using TransferProgress = std::function<void(std::int64_t received, std::int64_t total)>;

// Returns Downloaded, or the event for the failure. A cancel takes effect at the next piece of data, or at once if
// `transfer.server.abort` is `stop.transfer`.
[[nodiscard]] UpdateEvent::Kind downloadPackage(const PackageTransfer& transfer, const UpdateCancellation& stop,
                                                const TransferProgress& onProgress);
