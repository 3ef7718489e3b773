#include "system/platform.h"

#include <csignal>
#include <memory>
#include <utility>

#include <pthread.h>

const char* platformName() {
    return "linux";
}

bool toLocalTime(std::time_t seconds, std::tm& local) {
    return ::localtime_r(&seconds, &local) != nullptr;
}

void ignoreBrokenPipes() {
    std::signal(SIGPIPE, SIG_IGN);
}

bool startThread(std::size_t stackBytes, std::function<void()> work) {
    auto owned = std::make_unique<std::function<void()>>(std::move(work));
    const auto run = [](void* argument) -> void* {
        const std::unique_ptr<std::function<void()>> started(static_cast<std::function<void()>*>(argument));
        (*started)();
        return nullptr;
    };
    pthread_attr_t attributes;
    if (::pthread_attr_init(&attributes) != 0) return false;
    ::pthread_attr_setstacksize(&attributes, stackBytes);
    ::pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
    pthread_t thread;
    const bool started = ::pthread_create(&thread, &attributes, run, owned.get()) == 0;
    ::pthread_attr_destroy(&attributes);
    if (started) (void)owned.release(); // the thread deletes it
    return started;
}
