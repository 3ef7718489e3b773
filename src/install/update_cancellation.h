#pragma once

// Stops an update run. The main thread sets the fields, the install worker reads them.

#include <atomic>

#include "system/http.h"

struct UpdateCancellation {
    // The worker checks it during the download, before each entry of the archive, and while it waits for another
    // launcher.
    std::atomic<bool> cancelRequested = false;
    // True when the launcher closes. The worker then also stops in the middle of a hash or an entry, and stops retrying
    // to replace the editor.
    std::atomic<bool> closing = false;
    HttpAbort transfer; // package download; a cancel aborts it
    HttpAbort requests; // manifest and statement; only closing aborts them

    void cancel() {
        cancelRequested = true;
        transfer.abort();
    }
    void close() {
        closing = true;
        requests.abort();
        cancel();
    }
    void clearCancel() { // call it only while no worker runs
        cancelRequested = false;
        transfer = HttpAbort();
    }
};
