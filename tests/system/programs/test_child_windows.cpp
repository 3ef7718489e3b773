// A program that the tests start as another process.
//
//   volo_test_child [argument]   an editor: writes about itself to the file %VOLO_CHILD_REPORT%, lines "key=value"
//   volo_test_child --guard      an instance that holds the guard
//
// Both run until the file %VOLO_CHILD_UNTIL% exists. Without that variable they end at once.

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

// One argument as CommandLineToArgvW splits the command line, which differs from the C runtime.
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

void report(const std::string& path, int argc, char** argv) {
    std::ostringstream out;
    out << "directory=" << fs::current_path().string() << "\ncount=" << argc - 1 << "\nprogram=" << argv[0]
        << "\nargument=" << (argc > 1 ? argv[1] : "") << "\nsystem=" << systemArgument(1)
        << "\nconsole=" << (GetConsoleWindow() != nullptr)
        << "\nhandle=" << handleIsOpen(getEnvironmentString("VOLO_CHILD_HANDLE")) << "\n";
    std::ofstream(path + ".part", std::ios::binary) << out.str();
    fs::rename(path + ".part", path); // the test must not see the file while it is open
}

} // namespace

int main(int argc, char** argv) {
    const SingleInstanceGuard* guard =
        argc > 1 && std::string(argv[1]) == "--guard" ? new SingleInstanceGuard : nullptr;
    const std::string path = getEnvironmentString("VOLO_CHILD_REPORT");
    if (!path.empty()) report(path, argc, argv);
    const std::string until = getEnvironmentString("VOLO_CHILD_UNTIL");
    for (int i = 0; i < 12000 && !until.empty() && !fs::exists(until); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5)); // a minute at most, in case the test died
    }
    return guard != nullptr && guard->anotherInstanceRuns() ? 1 : 0; // never released: the system must do that
}
