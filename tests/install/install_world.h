#pragma once

// A launcher's directory, its downloads, and an update server with a trusted certificate: what an install run needs.

#include <map>
#include <memory>
#include <mutex>

#include "install/editor_install_state.h"
#include "support/package_making.h"
#include "support/tls_server.h"
#include "support/trusted_authority.h"

// Names below a directory, "/" between parts; the value is a file's bytes, or "<directory>".
using Tree = std::map<std::string, std::string>;
Tree treeOf(const std::filesystem::path& directory);

// What a run ended with.
struct Outcome {
    EditorInstallStatus status = EditorInstallStatus::Idle;
    std::string message;
    std::vector<DownloadStatus> rows; // newest first
    bool operator==(const Outcome&) const = default;
};
std::ostream& operator<<(std::ostream& out, const Outcome& outcome);
Outcome failed(const std::string& message, std::vector<DownloadStatus> rows);
Outcome installed(const std::string& version, std::size_t rows); // each of them installed

class InstallWorld {
  public:
    InstallWorld();

    TemporaryFolder folder;
    const std::filesystem::path launcher; // three levels down: the search looks two levels up
    const std::filesystem::path downloads;
    const std::filesystem::path editor;
    const std::filesystem::path staging;

    // What the server says to a path; the request has been read already. Any other path is a 404 with a body.
    using Answer = std::function<void(TlsConnection&)>;
    void serve(const std::string& path, Answer answer);
    void serve(const std::string& path, const std::string& body, int status = 200);
    std::string url(const std::string& path) const;
    std::vector<std::string> requestedPaths() const;

    // Serves a manifest for this package with correct checksums. `extraMembers` come first, so they win.
    void release(const std::string& version, const std::string& package, const std::string& extraMembers = {});

    // An editor of version 1.0 with its marker, and what there is of it now.
    void installOldEditor() const;
    [[nodiscard]] bool oldEditorIsUntouched() const;

    std::string manifestUrl; // to be changed ahead of the first run
    EditorInstallState& state(const ArtifactAuthenticity& authenticity = {});
    Outcome run();    // one whole run of state()
    Outcome finish(); // of a run that has been started

  private:
    void answer(TlsConnection& connection);

    TrustedAuthority trust_;
    std::mutex mutex_; // guards answers_
    std::map<std::string, Answer> answers_;
    TlsServer server_;
    std::unique_ptr<EditorInstallState> state_;
};
