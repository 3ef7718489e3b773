#pragma once

// The application object. It owns the four long-lived subsystems and the state that the screens share, and chooses the
// screen of each frame. Main thread only. Create it before the window and destroy it after the window.

#include <cstdint>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "config/launcher_config.h"
#include "config/launcher_settings.h"
#include "install/editor_install_state.h"
#include "projects/project_entry.h"
#include "shell/text_field.h"
#include "signin/picture_file.h"
#include "signin/sign_in_flow.h"
#include "system/file_looks.h"

struct ImTextureData;
struct ImVec2;

enum class LauncherTab : std::int32_t { Projects = 0, Installs = 1, Downloads = 2 };
enum class ProjectSortColumn : std::int32_t { LastOpened = 0, Name = 1, Platform = 2, EditorVersion = 3 };

class LauncherApp {
  public:
    LauncherApp(); // reads configuration and settings; may start to restore a stored session
    ~LauncherApp();
    LauncherApp(const LauncherApp&) = delete;
    LauncherApp& operator=(const LauncherApp&) = delete;

    void drawFrame(float deltaSeconds);

    // True if a new frame would equal the last one as long as there is no input and no worker wakes the window.
    [[nodiscard]] bool isAtRest() const;

    // The actions of the Projects screen. An index is a position in the stored list.
    void beginNewProject();
    void createProject();
    void addProjectFromDisk();
    void openProjectRow(std::int32_t index);
    [[nodiscard]] bool openProjectPath(const std::string& path, std::string& errorText);
    void servicePendingOpen();
    void removeProject(std::int32_t index);
    void restoreRemovedProject(); // restores the last removed project, unless its path is in the list again

    // The subsystems. Without a usable configuration `signIn` and `install` are null.
    std::unique_ptr<LauncherConfig> config;
    std::unique_ptr<LauncherSettings> settings;
    std::unique_ptr<SignInFlow> signIn;
    std::unique_ptr<EditorInstallState> install;

    LauncherTab activeTab = LauncherTab::Projects;
    bool updateCheckStarted = false;    // allows one check per sign-in; "Sign out" clears it
    bool sessionRestoreStarted = false; // allows one attempt per run; never cleared

    // The Projects screen.
    char searchText[128] = {};
    bool sortStarredFirst = false;
    ProjectSortColumn sortColumn = ProjectSortColumn::LastOpened;
    bool sortAscending = true;
    std::vector<std::int32_t> displayedBefore; // list indices of the last frame's rows, in display order
    std::string projectToFocus;                // path of the project whose row gets the keyboard focus; empty: none

    // The popups. Code anywhere in a frame sets a request flag. drawProjectDialogs opens the popup and clears the flag.
    bool createProjectRequested = false;
    char newProjectName[160] = {};
    char newProjectLocation[1024] = {};
    std::string createProjectError;
    bool openErrorRequested = false;
    std::string openErrorMessage;

    std::string pendingOpenProjectPath; // the project to open after the running install; empty: none
    std::string noticeText;             // the notice on the Projects screen; empty: none
    std::int64_t lastEditorLaunchTime = 0;

    bool attentionWanted = false; // set after a sign-in or an install that a project waited for; main clears it
    [[nodiscard]] float downloadProgress() const; // from 0 to 1; negative if no download is active

  private:
    void collectResults();
    void drawNotConfiguredScreen();
    void drawSignInScreen();
    void drawSignedInShell();
    void handleShellKeys();
    void drawSidebar();
    void drawProjectsScreen();
    void drawInstallsScreen();
    void drawInstallAction(EditorInstallStatus status, float cardLeft, ImVec2 rowRight);
    void drawDownloadsScreen();
    void drawDownloadRow(int index);
    void drawProjectDialogs();
    void drawCreateProjectPopup();
    void drawOpenErrorPopup();

    // The parts of the Projects screen. projects_screen.h defines the records.
    struct ProjectsLayout;
    struct TableHeader;
    struct ProjectRows;
    struct RowRequest;
    enum class SearchKey { None, Enter, Down };
    SearchKey drawSearchBox(const ProjectsLayout& at);
    bool startSearchByTyping();
    std::int32_t takeProjectToFocus();
    void handleRowKeys(const ProjectRows& rows, RowRequest& request);
    void drawTableHeader(const ProjectsLayout& at, float top, float height);
    void drawSortHeader(const TableHeader& header, const char* label, float x, ProjectSortColumn column);
    void drawProjectTable(const ProjectsLayout& at, const ProjectRows& rows, float top, float height);
    void drawProjectRow(const ProjectRows& rows, std::size_t position, RowRequest& request);
    void drawRowTexts(const ProjectRows& rows, const ProjectEntry& entry, bool exists, ImVec2 min, ImVec2 max);
    void drawProjectMenu(std::int32_t index, bool exists, RowRequest& request);
    void drawEmptyProjects(const ProjectsLayout& at, float top, float height);

    void restoreStoredSession();
    void loadBackgroundTexture();
    void takeBackgroundTexture();
    void showOpenError(const std::string& message);
    bool refuseWhileEditorRuns(std::int64_t now);
    void keepAfterOpening(std::vector<ProjectEntry> projects);

    FileLooks looks; // what the last frame has read from the disk

    std::optional<ProjectEntry> removedProject; // for Ctrl+Z
    bool searchStartedByTyping = false;         // true until the search field is active

    ImTextureData* backgroundTexture = nullptr; // the sign-in screen's picture
    bool backgroundLoadTried = false;
    std::future<DecodedPicture> decodingBackground; // valid from the start of decoding until the result is used
};
