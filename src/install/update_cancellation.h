#pragma once

// Stops an update run. The frame thread sets the fields, the install worker reads them.

#include <atomic>

#include "system/http.h"

struct UpdateCancellation {
    // The worker checks it during the download, before each entry of the archive, and while it waits for another
    // launcher.
    std::atomic<bool> cancelRequested = false;
    // The launcher closes. This also interrupts all requests, hashing, the extraction of one entry, and the swap's
    // retries.
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
    void clearCancel() { // only while no worker runs
        cancelRequested = false;
        transfer = HttpAbort();
    }
};
