#include "sandbox/staging.h"

#include <filesystem>
#include <string>
#include <system_error>

#include "sandbox/child_process.h"
#include "system/operating_system.h"

namespace {

namespace fs = std::filesystem;

} // namespace

// Installs the browser as xdg-open in a folder at the start of PATH, because the launcher starts the first xdg-open
// that it finds in PATH.
bool stageBrowser(const SandboxPlaces& places, const fs::path& browser, const std::string& command,
                  std::string& failureText) {
    const fs::path opener = places.bin / "xdg-open";
    setEnvironment("PATH", places.bin.string() + ":" + getEnvironmentString("PATH"));
    if (command.empty()) return copyProgram(browser, opener, failureText);
    std::error_code error;
    fs::remove(opener, error);
    if (!writeText(opener, "#!/bin/sh\nexec " + command + " \"$@\"\n", failureText)) return false;
    fs::permissions(opener, fs::perms::owner_all, error);
    return !error;
}

void enterDesktop(const SandboxPlaces& places) {
    // The X cookie and the Wayland socket are found with HOME and XDG_RUNTIME_DIR. Set their full paths before these
    // variables change.
    const fs::path cookie = fs::path(getEnvironmentString("HOME")) / ".Xauthority";
    std::error_code error;
    if (getEnvironmentString("XAUTHORITY").empty() && fs::exists(cookie, error)) {
        setEnvironment("XAUTHORITY", cookie.string());
    }
    const fs::path wayland = getEnvironmentString("WAYLAND_DISPLAY");
    if (!wayland.empty()) {
        setEnvironment("WAYLAND_DISPLAY", (fs::path(getEnvironmentString("XDG_RUNTIME_DIR")) / wayland).string());
    }
    setEnvironment("HOME", places.home.string());
    setEnvironment("XDG_RUNTIME_DIR", places.runtime.string());
    for (const char* name : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_STATE_HOME"})
        unsetEnvironment(name);
}
