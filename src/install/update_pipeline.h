#pragma once

// Runs one update, from the manifest to the installed editor. Blocking; install worker only. The run shares no data
// with other threads except `UpdateRun::stop`.
//
// While the run changes files, it holds two file locks, so that a second launcher waits. It always takes the locks in
// the same order: first the lock in the downloads directory, then the lock next to the staging directory.

#include <functional>
#include <string>

#include "install/artifact_authenticity.h"
#include "install/install_status.h"
#include "install/package_download.h"
#include "install/update_cancellation.h"

struct UpdateRun {
    std::string manifestUrl;
    std::string downloadsDirectory;
    ArtifactAuthenticity authenticity;
    const UpdateCancellation& stop;
    std::function<void(const UpdateEvent&)> onEvent; // called on the worker for each step, not for the final event
    TransferProgress onProgress;
};

// Runs one update. Returns the event that ended the run.
[[nodiscard]] UpdateEvent updateEditor(const UpdateRun& run);
