#pragma once

// How the frame thread ends an update run. The frame thread sets it, the install worker reads it.

#include <atomic>

#include "system/http.h"

struct RunStop {
    // Takes effect during the transfer, before each entry of the archive, and while the run waits for another launcher.
    std::atomic<bool> cancelRequested = false;
    // The launcher closes: also interrupts every request, hashing, an entry, and the retries of the swap.
    std::atomic<bool> closing = false;
    HttpAbort transfer; // of the package; aborted by a cancel
    HttpAbort requests; // for manifest and statement; aborted by closing alone

    void cancel() {
        cancelRequested = true;
        transfer.abort();
    }
    void close() {
        closing = true;
        requests.abort();
        cancel();
    }
    void clearCancel() { // while no worker runs
        cancelRequested = false;
        transfer = HttpAbort();
    }
};
