#pragma once

// The one application object: owns the four long-lived subsystems, holds the state that the screens share, and decides
// every frame what is drawn. Main thread only. Built before any window exists and destroyed after the last one is gone.

#include "config/launcher_config.h"
#include "config/launcher_settings.h"
#include "install/editor_install_state.h"
#include "signin/sign_in_flow.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

struct ImTextureData;
struct ImVec2;

enum class LauncherTab : std::int32_t { Projects = 0, Installs = 1, Downloads = 2 };
enum class ProjectSortColumn : std::int32_t { LastOpened = 0, Name = 1, Platform = 2, EditorVersion = 3 };

class LauncherApp {
  public:
    LauncherApp(); // reads configuration and settings; may begin to restore a stored session
    ~LauncherApp();
    LauncherApp(const LauncherApp&) = delete;
    LauncherApp& operator=(const LauncherApp&) = delete;

    void drawFrame(float deltaSeconds);

    // Projects: what the buttons and rows do. An index counts in the stored list.
    void beginNewProject();
    void createProject();
    void addProjectFromDisk();
    void openProjectRow(std::int32_t index);
    [[nodiscard]] bool openProjectPath(const std::string& path, std::string& errorText);
    void servicePendingOpen();

    // The subsystems. `signIn` and `install` exist only with a usable configuration.
    std::unique_ptr<LauncherConfig> config;
    std::unique_ptr<LauncherSettings> settings;
    std::unique_ptr<SignInFlow> signIn;
    std::unique_ptr<EditorInstallState> install;

    LauncherTab activeTab = LauncherTab::Projects;
    bool updateCheckStarted = false;    // in this signed-in stretch; the sidebar's Sign out clears it
    bool sessionRestoreStarted = false; // never cleared: one attempt per run

    // The Projects screen.
    char searchText[128] = {};
    bool sortStarredFirst = false;
    ProjectSortColumn sortColumn = ProjectSortColumn::LastOpened;
    bool sortAscending = true;

    // The popups. A request is a one-frame flag that the dialog step of the frame consumes.
    bool createProjectRequested = false;
    char newProjectName[160] = {};
    char newProjectLocation[1024] = {};
    std::string createProjectError;
    bool openErrorRequested = false;
    std::string openErrorMessage;

    std::string pendingOpenProjectPath; // opened when the running install ends; empty: none waits
    std::string noticeText;             // the band of the Projects screen
    std::int64_t lastEditorLaunchTime = 0;

  private:
    void drawNotConfiguredScreen();
    void drawSignInScreen();
    void drawSignedInShell();
    void drawSidebar();
    void drawProjectsScreen();
    void drawInstallsScreen();
    void drawDownloadsScreen();
    void drawDownloadRow(int index);
    void drawProjectDialogs();
    void drawCreateProjectPopup();
    void drawOpenErrorPopup();

    void drawSearchBox(ImVec2 min, ImVec2 max);
    void drawProjectTable(float top);
    void drawSortHeader(const char* label, float x, ProjectSortColumn column, ImVec2 textTopAndMiddle, float headerTop,
                        float headerHeight);

    void loadBackgroundTexture();
    void showOpenError(const std::string& message);
    void markOpened(const std::string& path, std::int64_t seconds);

    ImTextureData* backgroundTexture = nullptr; // the sign-in screen's picture
    bool backgroundLoadTried = false;
};
