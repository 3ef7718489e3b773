// The tests of processes start this program.
//
//   volo_test_child [argument]   simulates an editor
//   volo_test_child --guard      simulates an instance of the launcher
//
// It writes lines "key=value" about itself to a new file in $VOLO_CHILD_FOLDER/reports, and runs until
// $VOLO_CHILD_FOLDER/until exists.

#include "system/programs/test_child.h"

#include <chrono>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <thread>

#include "system/operating_system.h"
#include "system/single_instance.h"

int main(int argc, char** argv) {
    namespace fs = std::filesystem;
    const fs::path folder = getEnvironmentString("VOLO_CHILD_FOLDER");
    const std::string argument = argc > 1 ? argv[1] : "";
    static SingleInstanceGuard* guard = nullptr; // never deleted: the operating system releases it at the end
    if (argument == "--guard") guard = new SingleInstanceGuard;

    std::ostringstream report;
    report << "directory=" << fs::current_path().string() << "\ncount=" << argc - 1 << "\nargument=" << argument
           << "\nguard=" << (guard != nullptr && !guard->anotherInstanceRuns() ? "held" : "not held") << "\n"
           << platformReport();
    const std::string name = std::to_string(std::random_device{}());
    std::ofstream(folder / name, std::ios::binary) << report.str();
    fs::rename(folder / name, folder / "reports" / name); // the test must not see an incomplete file

    for (int i = 0; i < 12000 && fs::exists(folder) && !fs::exists(folder / "until"); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5)); // a minute at most, in case the test died
    }
    return 0;
}
