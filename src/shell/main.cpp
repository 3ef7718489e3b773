// The program's entry point. Creates the single-instance guard, the application object and the window, runs the frame
// loop, and shuts down in a fixed order. Ignores command-line arguments.

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "shell/launcher_app.h"
#include "signin/loopback_listener.h"
#include "system/dialog_hook.h"
#include "system/dialog_problem.h"
#include "system/frame_wake.h"
#include "system/http.h"
#include "system/operating_system.h"
#include "system/platform.h"
#include "system/single_instance.h"
#include "ui/ui_host.h"
#include "ui/ui_theme.h"

namespace {

// Returns the first candidate that is a regular file, as UTF-8. Empty if there is none.
std::string findFont(const std::vector<std::filesystem::path>& candidates) {
    for (const std::filesystem::path& candidate : candidates) {
        std::error_code ignored;
        if (!std::filesystem::is_regular_file(candidate, ignored)) continue;
        const std::u8string text = candidate.u8string();
        return {text.begin(), text.end()};
    }
    return {};
}

int run() {
    ignoreBrokenPipes(); // a write to a broken TLS connection must not end the process
    SingleInstanceGuard guard;
    if (guard.anotherInstanceRuns()) {
        std::fputs("[Launcher] VOLO Launcher is already running.\n", stderr);
        return 0;
    }

    LauncherApp app; // its destructor joins the workers, after the window is closed

    UiHostDesc desc;
    desc.title = "VOLO Launcher";
    desc.width = 1180;
    desc.height = 740;
    desc.minWidth = 900;
    desc.minHeight = 560;

    const std::filesystem::path launcherFolder = launcherDirectory();
    const std::filesystem::path engineFont = "engine/ui/misc/fonts/Roboto-Medium.ttf";
    std::error_code ignored;
    const std::vector<std::filesystem::path> fontCandidates = {
        launcherFolder / "Roboto-Medium.ttf",
        launcherFolder / engineFont,
        std::filesystem::current_path(ignored) / engineFont,
    };
    const std::string fontPath = findFont(fontCandidates);
    desc.fontPath = fontPath.c_str();

    UiHost host;
    host.placementDirectory = userDataDirectory();
    std::string errorText;
    if (!host.initialize(desc, errorText)) {
        std::fprintf(stderr, "[Launcher] UI host failed: %s\n", errorText.c_str());
        guard.release();
        return 1;
    }

    uiThemeInitialize(host.integration);
    setDialogHook([&host](std::int64_t dialog) { host.repaintBehindDialog(dialog); });
    setFrameWake(&UiHost::wake);
    host.isAtRest = [&app] { return app.isAtRest(); };
    while (host.beginFrame()) {
        uiThemeSetScale(host.dpiScale());
        uiThemeTick(host.deltaSeconds);
        uiThemeApplyStyle();
        app.drawFrame(host.deltaSeconds);
        if (std::exchange(app.attentionWanted, false)) host.requestAttention();
        host.setProgress(app.downloadProgress());
        host.say(takeDialogProblem());
        float clearColour[4];
        uiThemeBackgroundFloat(clearColour);
        if (!host.presentFrame(clearColour)) break;
    }

    setDialogHook(nullptr);
    setFrameWake(nullptr); // workers still run and would wake a window that is closed
    host.shutdown();
    guard.release(); // before ~LauncherApp joins the workers, so that a new instance can start at once
    return 0;
}

} // namespace

int main() { // NOLINT(bugprone-exception-escape): an exception ends the process, because nothing could handle it
    const int status = run();
    if (LoopbackListener::hasLeftThreads() || unfinishedRequests() > 0) std::_Exit(status);
    return status;
}
