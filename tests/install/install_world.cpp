#include "install/install_world.h"

#include <gtest/gtest.h>

#include "support/eventually.h"
#include "support/recording_system.h"

namespace fs = std::filesystem;

Tree treeOf(const fs::path& directory) {
    Tree tree;
    std::error_code error;
    for (const auto& entry : fs::recursive_directory_iterator(directory, error))
        tree[entry.path().lexically_relative(directory).generic_string()] =
            entry.is_directory() ? "<directory>" : readFileBytes(entry.path());
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
    const std::string request = connection.readRequest();
    const std::size_t start = request.find(' ') + 1;
    Answer answer = [](TlsConnection& unknown) { unknown.write(httpAnswer(404, "not here")); };
    {
        const std::lock_guard lock(mutex_);
        const auto found = answers_.find(request.substr(start, request.find(' ', start) - start));
        if (found != answers_.end()) answer = found->second;
    }
    answer(connection);
}

void InstallWorld::serve(const std::string& path, Answer answer) {
    const std::lock_guard lock(mutex_);
    answers_[path] = std::move(answer);
}

void InstallWorld::serve(const std::string& path, const std::string& body, int status) {
    serve(path, [body, status](TlsConnection& connection) { connection.write(httpAnswer(status, body)); });
}

std::string InstallWorld::url(const std::string& path) const {
    return "https://127.0.0.1:" + std::to_string(server_.port()) + path;
}

std::vector<std::string> InstallWorld::requestedPaths() const {
    std::vector<std::string> paths;
    for (const std::string& request : server_.requests())
        paths.push_back(request.substr(4, request.find(' ', 4) - 4));
    return paths;
}

void InstallWorld::release(const std::string& version, const std::string& package, const std::string& extraMembers) {
    serve("/package", package);
    serve("/manifest", "{" + extraMembers + "\"version\":\"" + version + "\",\"url\":\"" + url("/package") +
                           "\",\"sha256\":\"" + sha256Hex(package) + "\"}");
}

static const Tree kOldEditor = {{"editor.exe", "old"},
                                {"data", "<directory>"},
                                {"data/model.bin", "old data"},
                                {".zantor_editor_version", "1.0\n"}};

void InstallWorld::installOldEditor() const {
    for (const auto& [name, bytes] : kOldEditor) {
        if (bytes != "<directory>") folder.write(editor / name, bytes);
    }
}

bool InstallWorld::oldEditorIsUntouched() const {
    return treeOf(editor) == kOldEditor;
}

EditorInstallState& InstallWorld::state(const ArtifactAuthenticity& authenticity) {
    if (!state_) state_ = std::make_unique<EditorInstallState>(manifestUrl, downloads.string(), authenticity);
    return *state_;
}

std::ostream& operator<<(std::ostream& out, const Outcome& outcome) {
    out << "status " << static_cast<int>(outcome.status) << ", " << outcome.message << ", rows";
    for (const DownloadStatus row : outcome.rows)
        out << ' ' << static_cast<int>(row);
    return out;
}

Outcome failed(const std::string& message, std::vector<DownloadStatus> rows) {
    return {EditorInstallStatus::Failed, message, std::move(rows)};
}

Outcome installed(const std::string& version, std::size_t rows) {
    return {EditorInstallStatus::Installed, "Installed — version " + version,
            std::vector(rows, DownloadStatus::Installed)};
}

Outcome InstallWorld::run() {
    state().startUpdate();
    return finish();
}

Outcome InstallWorld::finish() {
    EXPECT_TRUE(eventually(
        [this] {
            const EditorInstallStatus status = state().status();
            return status < EditorInstallStatus::Checking || status > EditorInstallStatus::Installing;
        },
        std::chrono::seconds(60)));
    state().joinIfFinished();
    Outcome outcome{state().status(), state().statusMessage(), {}};
    for (const DownloadRecord& row : state().downloadsSnapshot())
        outcome.rows.push_back(row.status);
    return outcome;
}
