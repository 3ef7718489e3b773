#pragma once

// One update run, from the manifest to the installed editor. Blocking; install worker only. It shares nothing but what
// UpdateRun holds. A cancel takes effect during the transfer and before each entry of the archive, nowhere else.

#include <atomic>
#include <functional>
#include <string>

#include "install/artifact_authenticity.h"
#include "install/install_progress.h"
#include "install/package_download.h"

struct UpdateRun {
    std::string manifestUrl;
    std::string downloadsDirectory;
    ArtifactAuthenticity authenticity;
    const std::atomic<bool>& cancelRequested;
    std::function<void(const UpdateEvent&)> onEvent; // the events that the run passes through
    TransferProgress onProgress;
};

// Returns the event that ends the run.
[[nodiscard]] UpdateEvent updateEditor(const UpdateRun& run);
