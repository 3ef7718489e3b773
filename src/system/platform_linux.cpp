#include "system/platform.h"

#include <csignal>

const char* platformName() {
    return "linux";
}

bool toLocalTime(std::time_t seconds, std::tm& local) {
    return ::localtime_r(&seconds, &local) != nullptr;
}

void ignoreBrokenPipes() {
    std::signal(SIGPIPE, SIG_IGN);
}

// A bound port is exclusive unless both sockets ask to share it.
void keepPortExclusive(std::intptr_t /*socket*/) {}
