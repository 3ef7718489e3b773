#include "system/platform.h"

#include <cstdint>
#include <memory>
#include <utility>

#include <windows.h>
#include <process.h>

const char* platformName() {
    return "windows";
}

bool toLocalTime(std::time_t seconds, std::tm& local) {
    return ::localtime_s(&local, &seconds) == 0;
}

// Does nothing, because Windows sends no signal for a broken connection: the write fails.
void ignoreBrokenPipes() {}

bool startThread(std::size_t stackBytes, std::function<void()> work) {
    auto owned = std::make_unique<std::function<void()>>(std::move(work));
    const auto run = [](void* argument) -> unsigned {
        const std::unique_ptr<std::function<void()>> started(static_cast<std::function<void()>*>(argument));
        (*started)();
        return 0;
    };
    const std::uintptr_t thread = ::_beginthreadex(nullptr, static_cast<unsigned>(stackBytes), run, owned.get(),
                                                   STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr);
    if (thread == 0) return false;
    (void)owned.release(); // the thread deletes it
    ::CloseHandle(reinterpret_cast<HANDLE>(thread));
    return true;
}
