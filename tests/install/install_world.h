#pragma once

// What an install run needs: a launcher's directory, a downloads directory, and an update server with a trusted
// certificate. Used by the test's own thread.

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "install/editor_install_state.h"
#include "support/package_making.h"
#include "support/temporary_folder.h"
#include "support/tls_server.h"
#include "support/trusted_authority.h"

// The content of an editor directory with the marker of this version.
Tree withMarker(Tree tree, const std::string& version);

class InstallWorld {
  public:
    InstallWorld();

    TemporaryFolder folder;
    const std::filesystem::path launcher; // three levels down: the launcher searches two levels up
    const std::filesystem::path downloads;
    const std::filesystem::path editor;
    const std::filesystem::path staging;

    // Sets the server's answer for a path: raw bytes (empty: the connection is reset), or a function that runs on a
    // server thread. Every other path is answered with 404.
    using Answer = std::function<void(TlsConnection&)>;
    void serve(const std::string& path, Answer answer);
    void serve(const std::string& path, const std::string& bytes);
    std::string url(const std::string& path) const;
    std::size_t requestCount() const { return server_.requests().size(); }

    // Serves the package, and a manifest with its checksum. `extraMembers` come first in the manifest and win.
    void release(const std::string& version, const std::string& package, const std::string& extraMembers = {});

    void installOldEditor() const; // version 1.0
    // Expects the old editor, these files in the downloads directory, and an empty staging directory or none.
    void expectOldEditor(const Tree& downloaded, bool stagingStays) const;

    std::string manifestUrl; // change it before the first run
    EditorInstallState& state(const ArtifactAuthenticity& authenticity = {});
    void close() { state_.reset(); } // as the launcher does when its window closes
    // Both return what the user sees at the end: "Failed: Install cancelled. [Failed Installed]", newest row first.
    std::string run();
    std::string finish(); // of a started run

  private:
    void answer(TlsConnection& connection);

    TrustedAuthority trust_;
    std::mutex mutex_; // guards answers_
    std::map<std::string, Answer> answers_;
    TlsServer server_;
    std::unique_ptr<EditorInstallState> state_;
};
