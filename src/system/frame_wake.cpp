#include "system/frame_wake.h"

#include <mutex>

namespace {

std::mutex mutex; // held while currentWake runs
void (*currentWake)() = nullptr;

} // namespace

void setFrameWake(void (*wake)()) {
    const std::lock_guard lock(mutex);
    currentWake = wake;
}

void wakeFrame() {
    const std::lock_guard lock(mutex);
    if (currentWake) currentWake();
}
