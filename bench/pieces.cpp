// Runs one piece of the launcher's work, so that bench/compare can measure the process:
//
//   volo-bench hash FILE                        prints the SHA-256
//   volo-bench open CONTAINER ARCHIVE KEY       decrypts a package
//   volo-bench extract ARCHIVE FOLDER           extracts an archive
//   volo-bench download URL FILE                downloads a package
//   volo-bench install MANIFEST_URL FOLDER      runs a whole update of a launcher in FOLDER
//   volo-bench frames PROJECTS                  prints the processor milliseconds of the median frame of the Projects
//                                               screen with PROJECTS projects, in the slowest sort order
//
// Exit status: 0 done, 1 the work failed, 2 wrong usage.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include <time.h>

#include "crypto/sha256.h"
#include "install/package_container.h"
#include "install/package_download.h"
#include "install/package_extraction.h"
#include "install/update_cancellation.h"
#include "install/update_pipeline.h"
#include "support/ui_harness.h"
#include "system/platform.h"
#include "system/url.h"
#include "ui/ui_theme.h"

namespace {

using Arguments = std::vector<std::string>;

bool hash(const Arguments& arguments) {
    const std::string digest = sha256OfFile(arguments[0]);
    std::puts(digest.c_str());
    return !digest.empty();
}

bool open(const Arguments& arguments) {
    std::string failureText;
    const bool opened = decryptPackage(arguments[0], arguments[1], arguments[2], failureText);
    if (!opened) std::fprintf(stderr, "%s\n", failureText.c_str());
    return opened;
}

bool extract(const Arguments& arguments) {
    const UpdateCancellation stop;
    return extractArchive(arguments[0], arguments[1], stop) == ExtractionOutcome::Done;
}

bool download(const Arguments& arguments) {
    PackageTransfer transfer;
    if (!parseHttpsUrl(arguments[0], transfer.server.host, transfer.server.port, transfer.urlPath)) return false;
    transfer.packagePath = arguments[1];
    const UpdateCancellation stop;
    return downloadPackage(transfer, stop, [](auto...) {}) == UpdateEvent::Downloaded;
}

bool install(const Arguments& arguments) {
    const std::filesystem::path launcher(arguments[1]);
    recordingSystem().launcherDirectory = launcher.string();
    const UpdateCancellation stop;
    const UpdateEvent end = updateEditor({.manifestUrl = arguments[0],
                                          .downloadsDirectory = (launcher / "downloads").string(),
                                          .authenticity = {},
                                          .stop = stop,
                                          .onEvent = [](const UpdateEvent&) {},
                                          .onProgress = [](auto...) {}});
    if (end.kind != UpdateEvent::Installed) std::fprintf(stderr, "event %d %s\n", end.kind, end.detail.c_str());
    return end.kind == UpdateEvent::Installed;
}

double processorMilliseconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

double medianFrame(UiHarness& launcher) {
    constexpr int kWarmUp = 10;
    constexpr std::size_t kCounted = 101;
    launcher.frames(kWarmUp);
    std::vector<double> times;
    while (times.size() < kCounted) {
        const double began = processorMilliseconds();
        launcher.frame();
        times.push_back(processorMilliseconds() - began);
    }
    std::nth_element(times.begin(), times.begin() + kCounted / 2, times.end());
    return times[kCounted / 2];
}

bool frames(const Arguments& arguments) {
    UiHarness launcher;
    uiThemeShutdown(); // the harness has initialised the theme without a font
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe");
    launcher.integration.fontPath = program.parent_path() / "Roboto-Medium.ttf";
    uiThemeInitialize(&launcher.integration);
    LauncherApp& app = launcher.startSignedIn();
    std::vector<ProjectEntry> projects;
    const int count = std::atoi(arguments[0].c_str());
    for (int number = 0; number < count; ++number) {
        // Scatter the numbers in the names, so that the list is not sorted by name already.
        projects.push_back(launcher.makeProject("Project " + std::to_string(number * 7919 % 100003), 1000000 - number));
        projects.back().editorVersion = "2." + std::to_string(number % 10);
        projects.back().favorite = number % 5 == 0;
    }
    app.settings->setProjects(projects);
    double worst = 0.0;
    for (const auto column : {ProjectSortColumn::LastOpened, ProjectSortColumn::Name, ProjectSortColumn::Platform,
                              ProjectSortColumn::EditorVersion}) {
        app.sortColumn = column;
        worst = std::max(worst, medianFrame(launcher));
    }
    std::printf("%.3f\n", worst);
    return true;
}

struct Piece {
    std::string_view name;
    std::size_t arguments;
    bool (*run)(const Arguments&);
};
constexpr Piece kPieces[] = {{"hash", 1, hash},         {"open", 3, open},       {"extract", 2, extract},
                             {"download", 2, download}, {"install", 2, install}, {"frames", 1, frames}};

} // namespace

int main(int count, char** values) {
    ignoreBrokenPipes();
    Arguments arguments(values + 1, values + count);
    for (const Piece& piece : kPieces) {
        if (arguments.size() != piece.arguments + 1 || arguments[0] != piece.name) continue;
        arguments.erase(arguments.begin());
        return piece.run(arguments) ? 0 : 1;
    }
    std::fputs("volo-bench: see the head of bench/pieces.cpp for the words\n", stderr);
    return 2;
}
