// Starts many launchers one after the other in one process. They must leave nothing behind: no descriptor, no thread,
// no memory.

#include <chrono>
#include <cstdio>
#include <mutex>
#include <random>
#include <thread>

#include "long/launcher_run.h"
#include "support/eventually.h"
#include "system/http.h"

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

#ifdef __SANITIZE_THREAD__ // the sanitizer's own records grow too
constexpr long kMostGrowthKib = 64 * 1024;
#else
constexpr long kMostGrowthKib = 16 * 1024;
#endif

std::mutex chanceMutex;
std::mt19937 chance(1);

// Returns a number from 0 to limit - 1. Any thread.
int draw(int limit) {
    const std::lock_guard lock(chanceMutex);
    return static_cast<int>(chance() % static_cast<unsigned>(limit));
}

// Sends the right answer in two of three cases. Otherwise resets, stays silent or sends the right answer slowly.
void answerAtRandom(TlsConnection& connection, const std::string& body) {
    const int kind = draw(9);
    if (kind == 0) return connection.reset();
    if (kind == 1) return (void)connection.readRequest(); // silent until the launcher closes the connection
    if (kind > 2) return LauncherRun::answerWell(connection, body);
    for (const char byte : httpAnswer(200, body))
        if (!connection.write({byte}) || !connection.pause(5)) return;
}

// True if the process now uses more descriptors, more threads or much more memory than `before`, which was measured
// after the first tenth of the run.
bool hasGrown(const Resources& before) {
    Resources now;
    const bool grown = !eventually([&] {
        now = resources();
        return now.descriptors <= before.descriptors && now.threads <= before.threads;
    });
    std::printf("descriptors %ld to %ld, threads %ld to %ld, memory %ld to %ld MB\n", before.descriptors,
                now.descriptors, before.threads, now.threads, before.kib >> 10, now.kib >> 10);
    return grown || now.kib > before.kib + kMostGrowthKib;
}

// Installs a version, opens the project, and closes the launcher. Returns true if all this succeeds.
bool cycle(LauncherRun& run, int number) {
    run.version = number;
    setRecordedTime(LauncherRun::kServerTime + 3 * number); // a second click within 2 s does nothing
    run.launch(true);
    const bool good = eventually([&] { return !run.isBusy(); }) && run.isInstalled() &&
                      run.click(kProjectList, {0, "##project_row"}) &&
                      recordingSystem().launches.size() == static_cast<std::size_t>(number);
    run.app.reset();
    return good;
}

// Clicks an item if it is there. "allow" is the user's click in the browser.
bool clickItem(LauncherRun& run, const std::string& item) {
    const std::size_t row = item.find(" row");
    if (row != std::string::npos) return run.click(kDownloadList, {0, item.substr(0, row).c_str()});
    if (item != "allow") return run.click(kRoot, {item.c_str()});
    if (run.app->signIn->state != SignInState::SigningIn) return false;
    LauncherRun::allowSignIn();
    return true;
}

// Clicks a random selection of items, with random pauses, and closes the launcher. Returns the number of clicks, or -1
// if the launcher does not close.
int round(LauncherRun& run) {
    run.launch(draw(2) == 0);
    int clicks = 0;
    for (const char* item : {"Sign in", "Cancel", "Sign in", "allow", "Installs", "Cancel download", "Retry",
                             "Check for updates", "Cancel row", "Retry row", "Delete row", "Sign out"}) {
        if (draw(4) == 0) continue;
        if (std::string(item) == "Cancel row") run.app->activeTab = LauncherTab::Downloads; // not in the sidebar
        for (int wait = draw(3) == 0 ? 50 : draw(5); wait > 0 && run.isBusy(); --wait)
            std::this_thread::sleep_for(milliseconds(draw(10)));
        run.frame();
        clicks += clickItem(run, item) ? 1 : 0;
    }
    const auto start = steady_clock::now();
    run.app.reset();
    const bool closed = steady_clock::now() - start < std::chrono::seconds(2);
    return closed && eventually([] { return unfinishedRequests() == 0; }) ? clicks : -1;
}

} // namespace

bool runCycles(int count) {
    LauncherRun run;
    Resources before;
    for (int number = 1; number <= count; ++number) {
        if (!cycle(run, number)) return std::printf("FAIL cycle %d\n", number), false;
        if (number == count / 10) before = resources();
    }
    std::printf("%d cycles, ", count);
    return !hasGrown(before);
}

bool runRounds(int count) {
    setLongestReadTimeout(1);
    LauncherRun run(answerAtRandom);
    Resources before;
    int clicks = 0;
    for (int number = 1; number <= count; ++number) {
        run.version = number;
        const int added = round(run);
        if (added < 0) return std::printf("FAIL round %d: does not close\n", number), false;
        clicks += added;
        if (number == count / 10) before = resources();
    }
    std::printf("%d rounds, %d clicks, ", count, clicks);
    return !hasGrown(before);
}
