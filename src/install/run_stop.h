#pragma once

// How the frame thread ends an update run. Set by that thread, read by the install worker.

#include <atomic>

struct RunStop {
    // Takes effect during the transfer, before each entry of the archive, and while the run waits for another launcher.
    std::atomic<bool> cancelRequested = false;
    // The launcher closes: also interrupts hashing, an entry, and the retries of the swap.
    std::atomic<bool> closing = false;
};
