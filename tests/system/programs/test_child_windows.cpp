// What the tests start as another process.
//
//   volo_test_child [argument]   an editor: tells about itself in the file %VOLO_CHILD_REPORT%, a value a line
//   volo_test_child --guard      an instance that holds the guard
//   volo_test_child --browser X  writes the address X into the file %OPENED_URL%, and ends
//
// The first two stay until the file %VOLO_CHILD_UNTIL% exists; at once without one.

#include <chrono>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>

#include <windows.h>
#include <shellapi.h>

#include "system/operating_system.h"
#include "system/single_instance.h"

namespace {

namespace fs = std::filesystem;

// What the system's own splitting makes of the command line, beside the C runtime's.
std::string systemArgument(int number) {
    int count = 0;
    wchar_t** arguments = CommandLineToArgvW(GetCommandLineW(), &count);
    const std::wstring argument = number < count ? arguments[number] : L"";
    LocalFree(arguments);
    return {argument.begin(), argument.end()};
}

bool handleIsOpen(const std::string& number) {
    DWORD flags = 0;
    return GetHandleInformation(reinterpret_cast<HANDLE>(std::stoull("0" + number)), &flags) != 0;
}

// Nobody can remove a file here that still is open, so none comes to be seen before it is closed.
void writeClosed(const std::string& path, const std::string& text) {
    std::ofstream(path + ".part", std::ios::binary) << text;
    fs::rename(path + ".part", path);
}

void report(const std::string& path, int argc, char** argv) {
    std::ostringstream out;
    out << "directory=" << fs::current_path().string() << "\ncount=" << argc - 1 << "\nprogram=" << argv[0]
        << "\nargument=" << (argc > 1 ? argv[1] : "") << "\nsystem=" << systemArgument(1)
        << "\nconsole=" << (GetConsoleWindow() != nullptr)
        << "\nhandle=" << handleIsOpen(getEnvironmentString("VOLO_CHILD_HANDLE")) << "\n";
    writeClosed(path, out.str());
}

} // namespace

int main(int argc, char** argv) {
    const SingleInstanceGuard* guard =
        argc > 1 && std::string(argv[1]) == "--guard" ? new SingleInstanceGuard : nullptr;
    if (argc > 2 && std::string(argv[1]) == "--browser") {
        writeClosed(getEnvironmentString("OPENED_URL"), std::string(argv[2]) + '\n');
        return 0;
    }
    const std::string path = getEnvironmentString("VOLO_CHILD_REPORT");
    if (!path.empty()) report(path, argc, argv);
    const std::string until = getEnvironmentString("VOLO_CHILD_UNTIL");
    for (int i = 0; i < 12000 && !until.empty() && !fs::exists(until); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5)); // a minute at most, should the test have died
    }
    return guard != nullptr && guard->anotherInstanceRuns() ? 1 : 0; // never released: the system does that
}
