// A program that the tests start as another process. POSIX.
//
//   volo_test_child [argument]            an editor: writes about itself to the file $VOLO_CHILD_REPORT
//   volo_test_child --guard               an instance: prints W when it holds the guard, else prints L and ends
//   volo_test_child --launcher <program>  an instance that starts the program as the editor, and ends
//
// An editor and an instance with the guard run until the file $VOLO_CHILD_UNTIL exists. Without that variable they end
// at once.

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

#include <unistd.h>

#include "system/operating_system.h"
#include "system/single_instance.h"

namespace {

namespace fs = std::filesystem;

void waitForTheEnd() {
    const std::string until = getEnvironmentString("VOLO_CHILD_UNTIL");
    for (int i = 0; i < 12000 && !until.empty() && !fs::exists(until); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5)); // a minute at most, in case the test died
    }
}

// Lines "key=value".
void report(const std::string& path, int argc, char** argv) {
    std::ofstream out(path + ".part", std::ios::binary);
    out << "directory=" << fs::current_path().string() << "\nprocess=" << ::getpid() << "\nsession=" << ::getsid(0);
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("SigBlk:\t") || line.starts_with("SigIgn:\t")) {
            out << '\n' << line.substr(0, 6) << '=' << line.substr(8);
        }
    }
    std::error_code gone;
    out << "\ndescriptors=";
    for (int descriptor = 0; descriptor < 256; ++descriptor) {
        const fs::path target = fs::read_symlink("/proc/self/fd/" + std::to_string(descriptor), gone);
        const bool ownFile =
            target.string().find(path) == 0 || target == "/proc/" + std::to_string(::getpid()) + "/status";
        if (!gone && !ownFile) out << descriptor << ':' << target.string() << ' ';
    }
    out << "\ncount=" << argc - 1 << "\nargument=" << (argc > 1 ? argv[1] : "");
    out.close();
    fs::rename(path + ".part", path);
}

} // namespace

int main(int argc, char** argv) {
    const std::string role = argc > 1 ? argv[1] : "";
    if (role == "--guard" || role == "--launcher") {
        SingleInstanceGuard guard;
        const char answer = guard.anotherInstanceRuns() ? 'L' : 'W';
        if (::write(STDOUT_FILENO, &answer, 1) != 1) return 2;
        if (guard.anotherInstanceRuns()) return 0;
        if (role == "--guard") {
            waitForTheEnd();
            return 0;
        }
        std::string errorText;
        return launchEditorProcess(argv[2], "", "", errorText) ? 0 : 1;
    }
    const std::string path = getEnvironmentString("VOLO_CHILD_REPORT");
    if (!path.empty()) report(path, argc, argv);
    waitForTheEnd();
    return 0;
}
