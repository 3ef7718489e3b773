#include "system/programs/test_child.h"

#include <sstream>

#include <windows.h>
#include <shellapi.h>

#include "system/operating_system.h"

namespace {

// Returns the first argument as CommandLineToArgvW parses it. The C runtime parses the command line differently.
std::string systemArgument() {
    int count = 0;
    wchar_t** arguments = CommandLineToArgvW(GetCommandLineW(), &count);
    const std::wstring argument = count > 1 ? arguments[1] : L"";
    LocalFree(arguments);
    return {argument.begin(), argument.end()};
}

bool handleIsOpen(const std::string& number) {
    DWORD flags = 0;
    return GetHandleInformation(reinterpret_cast<HANDLE>(std::stoull("0" + number)), &flags) != 0;
}

} // namespace

std::string platformReport() {
    std::ostringstream lines;
    lines << "system=" << systemArgument() << "\nconsole=" << (GetConsoleWindow() != nullptr)
          << "\nhandle=" << handleIsOpen(getEnvironmentString("VOLO_CHILD_HANDLE")) << "\n";
    return lines.str();
}
