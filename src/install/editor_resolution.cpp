#include "install/editor_location.h"
#include "shell/launcher_app.h"
#include "system/operating_system.h"

std::string resolveEditorExecutable(const LauncherApp& app) {
    std::string found = findEditorExecutable(getEnvironmentString("ZANTOR_DIR"));
    if (found.empty()) found = findEditorExecutable(app.settings->installPath());
    if (found.empty() && app.install) found = findManagedEditor();
    if (found.empty()) found = findEditorNearLauncher();
    return found;
}
