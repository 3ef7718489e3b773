#pragma once

// One update run, from the manifest to the installed editor. Blocking; install worker only. It shares nothing but what
// UpdateRun holds.
//
// From the first change on the disk to the end the run holds two file locks, always taken in the same order: one in the
// downloads directory, one next to the staging directory. A second launcher waits for them.

#include <functional>
#include <string>

#include "install/artifact_authenticity.h"
#include "install/install_progress.h"
#include "install/package_download.h"
#include "install/run_stop.h"

struct UpdateRun {
    std::string manifestUrl;
    std::string downloadsDirectory;
    ArtifactAuthenticity authenticity;
    const RunStop& stop;
    std::function<void(const UpdateEvent&)> onEvent; // the events that the run passes through
    TransferProgress onProgress;
};

// Returns the event that ends the run.
[[nodiscard]] UpdateEvent updateEditor(const UpdateRun& run);
