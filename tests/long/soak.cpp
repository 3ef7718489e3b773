// Many launchers one after the other in one process, without a window. Nothing may be left of them: no descriptor, no
// thread, no memory.

#include <chrono>
#include <cstdio>
#include <map>
#include <mutex>
#include <random>
#include <string>
#include <thread>

#include "long/runs.h"
#include "long/servers.h"
#include "support/eventually.h"
#include "support/ui_harness.h"
#include "system/http.h"

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr long kMostGrowthKib = 16 * 1024;
constexpr milliseconds kLongestClose{2000}; // the goal is 100 ms, which a busy machine can miss

class Soak : UiHarness {
  public:
    Soak();
    bool cycles(int count); // install, open a project, exit
    bool rounds(int count); // clicks with random gaps, while servers misbehave

  private:
    void answer(TlsConnection& connection, const std::string& body);
    int draw(int limit); // from 0 to limit - 1; any thread
    bool installOpenAndExit(int number);
    void drawFrames(int most);
    void clickItem(const std::string& item);
    bool exit();
    bool hasGrown(const char* run, int count);

    std::mutex mutex_; // guards chance_
    std::mt19937 chance_{1};
    std::atomic<bool> misbehaving_ = false;
    LauncherServers servers_{[this](TlsConnection& connection, const std::string& body) { answer(connection, body); }};
    Resources before_; // after the first tenth of a run
    milliseconds slowestClose_{0};
    std::map<std::string, int> clicks_; // by the item that was clicked
};

Soak::Soak() {
    const ArtifactAuthenticity pinned = servers_.authenticity();
    folder.write("launcher/here/launcher_config.json",
                 R"({"google_client_id": "client", "google_client_secret": "secret", "editor_update_manifest_url": ")" +
                     servers_.manifestUrl() + R"(", "artifact_authenticity_url": ")" + pinned.url +
                     R"(", "artifact_authenticity_keys": ")" + pinned.keys + "\"}");
    LauncherSettings settings;
    settings.setProjects({makeProject("one", 1)});
    settings.setRefreshToken("refresh");
    settings.save();
    setLongestReadTimeout(1);
}

int Soak::draw(int limit) {
    const std::lock_guard lock(mutex_);
    return static_cast<int>(chance_() % static_cast<unsigned>(limit));
}

void Soak::answer(TlsConnection& connection, const std::string& body) {
    const int kind = misbehaving_ ? draw(9) : 0;
    if (kind < 6) return LauncherServers::answerWell(connection, body);
    if (kind == 6) return connection.reset();
    if (kind == 7) return (void)connection.readRequest(); // silent until the launcher closes the connection
    for (const char byte : httpAnswer(200, body))
        if (!connection.write({byte}) || !connection.pause(5)) return;
}

// Closes the launcher. False if that takes too long.
bool Soak::exit() {
    const auto start = steady_clock::now();
    app.reset();
    const auto time = std::chrono::duration_cast<milliseconds>(steady_clock::now() - start);
    slowestClose_ = std::max(slowestClose_, time);
    return time < kLongestClose && eventually([] { return unfinishedRequests() == 0; });
}

bool Soak::hasGrown(const char* run, int count) {
    Resources now;
    const bool grown = !eventually([&] {
        now = resources();
        return now.descriptors <= before_.descriptors && now.threads <= before_.threads;
    });
    std::printf("%s: %d, descriptors %ld to %ld, threads %ld to %ld, memory %ld to %ld MB, slowest close %d ms\n", run,
                count, before_.descriptors, now.descriptors, before_.threads, now.threads, before_.kib >> 10,
                now.kib >> 10, static_cast<int>(slowestClose_.count()));
    return grown || now.kib > before_.kib + kMostGrowthKib;
}

bool Soak::installOpenAndExit(int number) {
    servers_.version = number;
    setRecordedTime(kServerTime + 3 * number); // a second click within 2 s does nothing
    start();
    const bool installed = eventually([&] {
        frame();
        return app->signIn->state == SignInState::SignedIn && app->install->status() >= EditorInstallStatus::Installed;
    });
    frames(2);
    const bool opened = click(kProjectList, {0, "##project_row"}) &&
                        recordingSystem().launches.size() == static_cast<std::size_t>(number);
    return installed && opened && readFileBytes(launcher / "editor/editor.exe") == "1." + std::to_string(number) &&
           exit();
}

bool Soak::cycles(int count) {
    for (int number = 1; number <= count; ++number) {
        if (!installOpenAndExit(number)) return std::printf("FAIL cycle %d\n", number), false;
        if (number == count / 10) before_ = resources();
    }
    return !hasGrown("install, open, exit", count);
}

// Draws frames until the workers have ended, at most for this number.
void Soak::drawFrames(int most) {
    for (int i = 0; i < most; ++i) {
        frame();
        const EditorInstallStatus install = app->install->status();
        const bool installs = install >= EditorInstallStatus::Checking && install <= EditorInstallStatus::Installing;
        if (!installs && app->signIn->state == SignInState::SignedIn) return;
        std::this_thread::sleep_for(milliseconds(draw(10)));
    }
}

// Clicks an item if it is there. "allow" is the user's click in the browser.
void Soak::clickItem(const std::string& item) {
    const std::size_t row = item.find(" row");
    bool clicked = false;
    if (item == "allow") {
        clicked = app->signIn->state == SignInState::SigningIn;
        if (clicked) allowSignIn(recordingSystem().openedUrls.back());
        drawFrames(50);
    } else if (item == "Downloads") { // the sidebar has no item for this screen
        app->activeTab = LauncherTab::Downloads;
    } else if (row != std::string::npos) {
        clicked = click(kDownloadList, {0, item.substr(0, row).c_str()});
    } else {
        clicked = click(kRoot, {item.c_str()});
    }
    if (clicked) ++clicks_[item];
    drawFrames(draw(5));
}

bool Soak::rounds(int count) {
    misbehaving_ = true;
    for (int number = 1; number <= count; ++number) {
        servers_.version = servers_.version + 1;
        start();
        frame();
        for (const char* item :
             {"Sign in", "Cancel", "Sign in", "allow", "Installs", "Cancel download", "Retry", "Check for updates",
              "Cancel download", "Downloads", "Cancel row", "Retry row", "Delete row", "Sign out"})
            if (draw(4) > 0) clickItem(item);
        if (!exit()) return std::printf("FAIL round %d: closing\n", number), false;
        if (number == count / 10) before_ = resources();
    }
    for (const auto& [item, times] : clicks_)
        std::printf("%s %d, ", item.c_str(), times);
    const bool clickedAll = clicks_.size() == 11;
    if (!clickedAll) std::printf("FAIL: some item was never there\n");
    return !hasGrown("random rounds", count) && clickedAll;
}

} // namespace

bool runSoak(const std::string& kind, int count) {
    Soak soak;
    return kind == "cycles" ? soak.cycles(count) : soak.rounds(count);
}
