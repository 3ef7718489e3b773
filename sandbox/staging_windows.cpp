#include "sandbox/staging.h"

#include <filesystem>
#include <string>

#include <windows.h>

// Sets the default browser in the registry. This changes only a Wine prefix of the sandbox; see system_trust.h.
bool stageBrowser(const SandboxPlaces& places, const std::filesystem::path& browser, const std::string& command,
                  std::string& failureText) {
    const std::filesystem::path copy = places.bin / "volo-sandbox-browser.exe";
    if (!copyProgram(browser, copy, failureText)) return false;
    const std::wstring program =
        command.empty() ? L'"' + copy.wstring() + L'"' : std::filesystem::path(command).wstring();
    const std::wstring line = program + L" \"%1\"";
    const DWORD bytes = static_cast<DWORD>((line.size() + 1) * sizeof(wchar_t));
    if (RegSetKeyValueW(HKEY_LOCAL_MACHINE, L"Software\\Classes\\https\\shell\\open\\command", nullptr, REG_SZ,
                        line.c_str(), bytes) == ERROR_SUCCESS) {
        return true;
    }
    failureText = "the registry does not take the browser";
    return false;
}

void enterDesktop(const SandboxPlaces&) {}
