#pragma once

// Prepares what an install run needs: a launcher's directory, a downloads directory, and an update server with a
// trusted certificate. Use it on the test's own thread.

#include <chrono>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "install/editor_install_state.h"
#include "support/eventually.h"
#include "support/package_making.h"
#include "support/platform.h"
#include "support/recording_system.h"
#include "support/temporary_folder.h"
#include "support/tls_server.h"
#include "support/trusted_authority.h"

// Adds the marker file of this version to the content of an editor directory.
inline Tree withMarker(Tree tree, const std::string& version) {
    tree[".zantor_editor_version"] = asTextFile(version + "\n");
    return tree;
}

class InstallWorld {
  public:
    TemporaryFolder folder;
    // Three levels below `folder`, because the launcher searches for an editor up to two levels above its directory.
    const std::filesystem::path launcher = folder / "some" / "wo anders" / "Läuncher 日本";
    const std::filesystem::path downloads = folder / "downloads";
    const std::filesystem::path editor = launcher / "editor";
    const std::filesystem::path staging = launcher / "editor-staging";
    std::string manifestUrl; // change it before the first run

    // If `package` is not empty, the server offers it as version 2.0.
    explicit InstallWorld(const std::string& package = {}) {
        manifestUrl = url("/manifest");
        std::filesystem::create_directories(launcher);
        recordingSystem().launcherDirectory = launcher.string();
        if (!package.empty()) release("2.0", package);
    }

    // Sets the server's answer for a path: raw bytes (empty: the connection is reset), or a function that runs on a
    // server thread. Every other path is answered with 404.
    using Answer = std::function<void(TlsConnection&)>;
    void serve(const std::string& path, Answer answer) {
        const std::lock_guard lock(mutex_);
        answers_[path] = std::move(answer);
    }
    void serve(const std::string& path, const std::string& bytes) {
        serve(path, [bytes](TlsConnection& connection) {
            bytes.empty() ? connection.reset() : (void)connection.write(bytes);
        });
    }
    [[nodiscard]] std::string url(const std::string& path) const {
        return "https://127.0.0.1:" + std::to_string(server_.port()) + path;
    }
    [[nodiscard]] std::size_t requestCount() const { return server_.requests().size(); }

    // Serves the package, and a manifest with the package's checksum. `extraMembers` are at the start of the manifest,
    // so that they replace the members with the same names.
    void release(const std::string& version, const std::string& package, const std::string& extraMembers = {}) {
        serve("/package", httpAnswer(200, package));
        serve("/manifest", httpAnswer(200, "{" + extraMembers + "\"version\":\"" + version + "\",\"url\":\"" +
                                               url("/package") + "\",\"sha256\":\"" + sha256Hex(package) + "\"}"));
    }

    void installOldEditor() const { // version 1.0
        for (const auto& [name, bytes] : withMarker({{"editor.exe", "old"}, {"data/model.bin", "old"}}, "1.0"))
            folder.write(editor / name, bytes);
    }

    // Expects the old editor and these files in the downloads directory. Expects an empty staging directory if
    // `stagingStays` is true, otherwise none.
    void expectOldEditor(const Tree& downloaded, bool stagingStays) const {
        EXPECT_EQ(treeOf(editor),
                  withMarker({{"editor.exe", "old"}, {"data", "<directory>"}, {"data/model.bin", "old"}}, "1.0"));
        EXPECT_EQ(treeOf(downloads), downloaded);
        EXPECT_EQ(std::filesystem::exists(staging), stagingStays);
        EXPECT_EQ(treeOf(staging), Tree{});
    }

    EditorInstallState& state(const ArtifactAuthenticity& authenticity = {}) {
        if (!state_) state_ = std::make_unique<EditorInstallState>(manifestUrl, downloads.string(), authenticity);
        return *state_;
    }
    void close() { state_.reset(); } // as the launcher does when its window closes

    // Runs an update. Returns what the user sees at the end, such as "Failed: Install cancelled. [Failed Installed]".
    // The brackets contain the states of the download rows, newest row first.
    std::string run() {
        state().startUpdate();
        return finish();
    }
    // Waits for the end of a run that has been started. Returns the text that run() describes.
    std::string finish() {
        static const char* const kStatus[] = {"Idle",      "Checking",         "Downloading", "Installing",
                                              "Installed", "InstalledOffline", "Failed"};
        static const char* const kRow[] = {"Downloading", "Downloaded", "Installing", "Installed", "Failed"};
        const auto hasEnded = [this] {
            const EditorInstallStatus status = state().status();
            return status < EditorInstallStatus::Checking || status > EditorInstallStatus::Installing;
        };
        EXPECT_TRUE(eventually(hasEnded, std::chrono::seconds(60)));
        state().joinIfFinished();
        std::string rows;
        for (const DownloadRecord& row : state().downloadsSnapshot())
            rows += (rows.empty() ? "" : " ") + std::string(kRow[static_cast<int>(row.status)]);
        return kStatus[static_cast<int>(state().status())] + (": " + state().statusMessage()) + " [" + rows + "]";
    }

  private:
    void answer(TlsConnection& connection) {
        const std::string path = parseHttpRequest(connection.readRequest()).path;
        Answer answer = [](TlsConnection& unknown) { unknown.write(httpAnswer(404, "not here")); };
        {
            const std::lock_guard lock(mutex_);
            const auto found = answers_.find(path);
            if (found != answers_.end()) answer = found->second;
        }
        answer(connection);
    }

    TrustedAuthority trust_;
    std::mutex mutex_; // guards answers_
    std::map<std::string, Answer> answers_;
    TlsServer server_{TrustedAuthority::loopback(), [this](TlsConnection& connection) { answer(connection); }};
    std::unique_ptr<EditorInstallState> state_;
};
