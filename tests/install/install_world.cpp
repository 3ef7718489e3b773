#include "install/install_world.h"

#include <gtest/gtest.h>

#include "support/eventually.h"
#include "support/platform.h"
#include "support/recording_system.h"

namespace fs = std::filesystem;

Tree withMarker(Tree tree, const std::string& version) {
    tree[".zantor_editor_version"] = asTextFile(version + "\n");
    return tree;
}

InstallWorld::InstallWorld()
    : launcher(folder / "some" / "wo anders" / "Läuncher 日本")
    , downloads(folder / "downloads")
    , editor(launcher / "editor")
    , staging(launcher / "editor-staging")
    , server_(TrustedAuthority::loopback(), [this](TlsConnection& connection) { answer(connection); }) {
    manifestUrl = url("/manifest");
    fs::create_directories(launcher);
    recordingSystem().launcherDirectory = launcher.string();
}

void InstallWorld::answer(TlsConnection& connection) {
    const std::string path = parseHttpRequest(connection.readRequest()).path;
    Answer answer = [](TlsConnection& unknown) { unknown.write(httpAnswer(404, "not here")); };
    {
        const std::lock_guard lock(mutex_);
        const auto found = answers_.find(path);
        if (found != answers_.end()) answer = found->second;
    }
    answer(connection);
}

void InstallWorld::serve(const std::string& path, Answer answer) {
    const std::lock_guard lock(mutex_);
    answers_[path] = std::move(answer);
}

void InstallWorld::serve(const std::string& path, const std::string& bytes) {
    serve(path,
          [bytes](TlsConnection& connection) { bytes.empty() ? connection.reset() : (void)connection.write(bytes); });
}

std::string InstallWorld::url(const std::string& path) const {
    return "https://127.0.0.1:" + std::to_string(server_.port()) + path;
}

void InstallWorld::release(const std::string& version, const std::string& package, const std::string& extraMembers) {
    serve("/package", httpAnswer(200, package));
    serve("/manifest", httpAnswer(200, "{" + extraMembers + "\"version\":\"" + version + "\",\"url\":\"" +
                                           url("/package") + "\",\"sha256\":\"" + sha256Hex(package) + "\"}"));
}

void InstallWorld::installOldEditor() const {
    for (const auto& [name, bytes] : withMarker({{"editor.exe", "old"}, {"data/model.bin", "old"}}, "1.0"))
        folder.write(editor / name, bytes);
}

void InstallWorld::expectOldEditor(const Tree& downloaded, bool stagingStays) const {
    EXPECT_EQ(treeOf(editor),
              withMarker({{"editor.exe", "old"}, {"data", "<directory>"}, {"data/model.bin", "old"}}, "1.0"));
    EXPECT_EQ(treeOf(downloads), downloaded);
    EXPECT_EQ(fs::exists(staging), stagingStays);
    EXPECT_EQ(treeOf(staging), Tree{});
}

EditorInstallState& InstallWorld::state(const ArtifactAuthenticity& authenticity) {
    if (!state_) state_ = std::make_unique<EditorInstallState>(manifestUrl, downloads.string(), authenticity);
    return *state_;
}

std::string InstallWorld::run() {
    state().startUpdate();
    return finish();
}

std::string InstallWorld::finish() {
    static const char* const kStatus[] = {"Idle",      "Checking",         "Downloading", "Installing",
                                          "Installed", "InstalledOffline", "Failed"};
    static const char* const kRow[] = {"Downloading", "Downloaded", "Installing", "Installed", "Failed"};
    const auto isBusy = [this] {
        return state().status() >= EditorInstallStatus::Checking && state().status() <= EditorInstallStatus::Installing;
    };
    EXPECT_TRUE(eventually([&] { return !isBusy(); }, std::chrono::seconds(60)));
    state().joinIfFinished();
    std::string rows;
    for (const DownloadRecord& row : state().downloadsSnapshot())
        rows += (rows.empty() ? "" : " ") + std::string(kRow[static_cast<int>(row.status)]);
    return kStatus[static_cast<int>(state().status())] + (": " + state().statusMessage()) + " [" + rows + "]";
}
