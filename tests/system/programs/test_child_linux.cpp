#include "system/programs/test_child.h"

#include <csignal>
#include <filesystem>
#include <sstream>

#include <unistd.h>

std::string platformReport() {
    std::ostringstream lines;
    lines << "session=" << (::getsid(0) == ::getpid() ? "own" : "the launcher's") << "\ndescriptors=";
    for (int descriptor = 0; descriptor < 256; ++descriptor) {
        std::error_code closed;
        const auto target = std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(descriptor), closed);
        if (!closed) lines << descriptor << ':' << target.string() << ' ';
    }
    lines << "\nsignals=";
    sigset_t blocked;
    ::sigprocmask(SIG_BLOCK, nullptr, &blocked);
    for (int signal = 1; signal < NSIG; ++signal) {
        struct sigaction action {};
        if (sigismember(&blocked, signal) == 1) lines << "blocks " << signal << ' ';
        if (::sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN) lines << "ignores " << signal;
    }
    return lines.str() + "\n";
}
