#include "support/settable_system.h"

#include <atomic>
#include <cstdlib>
#include <ctime>

#include "system/operating_system.h"

static std::string theLauncherDirectory; // set while no worker runs
static std::atomic<std::int64_t> theCurrentTime{0};

void setLauncherDirectory(const std::string& directory) {
    theLauncherDirectory = directory;
}

void setCurrentTime(std::int64_t seconds) {
    theCurrentTime = seconds;
}

std::string launcherDirectory() {
    return theLauncherDirectory;
}

std::int64_t currentTimeSeconds() {
    return theCurrentTime != 0 ? theCurrentTime.load() : static_cast<std::int64_t>(std::time(nullptr));
}

std::string getEnvironmentString(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}
