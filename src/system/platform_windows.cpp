#include "system/platform.h"

#include <winsock2.h>

const char* platformName() {
    return "windows";
}

bool toLocalTime(std::time_t seconds, std::tm& local) {
    return ::localtime_s(&local, &seconds) == 0;
}

// Windows reports a broken connection to the writer only.
void ignoreBrokenPipes() {}

// Without this option a second socket with SO_REUSEADDR could bind the port and take its connections.
void keepPortExclusive(std::intptr_t socket) {
    const BOOL yes = TRUE;
    ::setsockopt(static_cast<SOCKET>(socket), SOL_SOCKET, SO_EXCLUSIVEADDRUSE, reinterpret_cast<const char*>(&yes),
                 sizeof yes);
}
