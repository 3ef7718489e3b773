#pragma once

// One run of the install worker: from the update manifest to the installed editor. Lives on the worker's stack for the
// length of the run; whatever comes of it is told through the EditorInstallState, whose mutex it takes for a few
// assignments at a time. Cancel is heard during the transfer and before each entry of the archive, nowhere else.

#include <string>

#include "install/editor_install_state.h"
#include "install/update_manifest.h"

class UpdatePipeline {
  public:
    explicit UpdatePipeline(EditorInstallState& state)
        : state_(state) {}
    void run();

  private:
    [[nodiscard]] bool fetchManifest(std::string& failureText);
    [[nodiscard]] bool havePackage();
    void installPackage();
    [[nodiscard]] bool openContainer(std::string& decryptedPath); // on false it has reported

    // package_download.cpp. On false it has reported.
    [[nodiscard]] bool downloadPackage();
    void failTransfer(const std::string& partPath, const std::string& message);

    void report(EditorInstallStatus status, const std::string& message);
    // The same, and every row of this version gets `rowStatus`, whatever became of it before.
    void reportRows(DownloadStatus rowStatus, EditorInstallStatus status, const std::string& message);
    void reportOffline();
    std::string installedMessage() const;

    EditorInstallState& state_;
    UpdateManifest manifest_;
    std::string packageHost_; // this and the next two are the package's URL
    int packagePort_ = 443;
    std::string packageUrlPath_;
    std::string packagePath_; // on disk
};
