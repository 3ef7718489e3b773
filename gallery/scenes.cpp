// Lists the scenes: every screen in every state that a user can see.

#include <vector>

#include "gallery/stage.h"
#include "ui/ui_theme.h"

namespace {

constexpr const char* kLongName = "Wilhelmina Alexandrina van Oranje-Nassau-Dietz, Prof. Dr. med. habil.";
constexpr std::int64_t kMegabyte = 1 << 20;

ImVec2 pointIn(const Stage& stage, float x, float y) { // x and y are unscaled pixels
    return {x * stage.setting.scale, y * stage.setting.scale};
}

void signInFails(Stage& stage, const char* message) {
    stage.startConfigured().signIn->errorMessage = message;
}

void hover(Stage& stage, const char* window, IdPath path) {
    stage.frames(2);
    stage.moveTo(stage.rect(window, path)->GetCenter());
}

void typeInto(Stage& stage, const char* window, IdPath path, const std::string& text) {
    stage.frames(2);
    stage.click(window, path);
    stage.type(text);
}

void openMenu(Stage& stage, int row, const char* entry) {
    stage.frames(2);
    stage.click(kProjectList, {row, "##dots_menu"});
    stage.frames(3);
    if (const auto found = stage.menuEntry(entry)) stage.moveTo(found->GetCenter());
}

void openCreatePopup(Stage& stage) {
    stage.startWithProjects();
    stage.frames(2);
    stage.click(kRoot, {"+ New project"});
    stage.frames(3);
}

// Presses keys one after the other. The first key press makes the focus ring visible.
void pressKeys(Stage& stage, std::initializer_list<ImGuiKey> keys) {
    stage.frames(2);
    for (const ImGuiKey key : keys)
        stage.key(key);
}

void showInstall(Stage& stage, EditorInstallStatus status, const char* message, std::int64_t received = 0,
                 std::int64_t total = 0) {
    stage.startWithProjects().activeTab = LauncherTab::Installs;
    stage.setInstall({status, message, received, total, {}});
}

void showDownloads(Stage& stage, const std::vector<DownloadRecord>& rows) {
    stage.startWithProjects().activeTab = LauncherTab::Downloads;
    InstallProgress progress;
    progress.downloads = rows;
    stage.setInstall(progress);
}

void manyProjects(Stage& stage) {
    LauncherApp& app = stage.startWithProjects();
    std::vector<ProjectEntry> projects;
    for (int i = 1; i <= 200; ++i) {
        projects.push_back(stage.project("Case " + std::to_string(i), i));
        projects.back().favorite = i % 7 == 0;
    }
    app.settings->setProjects(projects);
}

using Status = EditorInstallStatus;
using Row = DownloadStatus;

const std::vector<Scene> kScenes = {
    // --- without a configuration
    {"not-configured-missing", [](Stage& stage) { stage.start(); }},
    {"not-configured-invalid",
     [](Stage& stage) {
         stage.writeConfiguration("{");
         stage.start();
     }},
    {"not-configured-placeholders",
     [](Stage& stage) {
         stage.writeConfiguration(R"({"google_client_id": "YOUR_ID", "google_client_secret": "YOUR_SECRET"})");
         stage.start();
     }},
    {"not-configured-example",
     [](Stage& stage) {
         stage.writeConfiguration("{}", "launcher_config.example.json");
         stage.start();
     }},
    {"not-configured-nowhere",
     [](Stage& stage) {
         recordingSystem().launcherDirectory.clear();
         stage.start();
     }},

    // --- sign-in
    {"sign-in", [](Stage& stage) { stage.startConfigured(); }},
    {"sign-in-hovered",
     [](Stage& stage) {
         stage.startConfigured();
         hover(stage, kRoot, {"Sign in"});
     }},
    {"sign-in-held",
     [](Stage& stage) {
         stage.startConfigured();
         hover(stage, kRoot, {"Sign in"});
         stage.press(ImGuiMouseButton_Left);
     }},
    {"sign-in-keyboard",
     [](Stage& stage) {
         stage.startConfigured();
         pressKeys(stage, {ImGuiKey_Tab});
     }},
    {"sign-in-support",
     [](Stage& stage) {
         stage.startConfigured();
         stage.moveTo(pointIn(stage, 0.2f * stage.setting.width, stage.setting.height - 58.0f));
     }},
    {"sign-in-error-short",
     [](Stage& stage) { signInFails(stage, "Google sign-in was not completed (access_denied)."); }},
    {"sign-in-error-long",
     [](Stage& stage) {
         signInFails(stage, "Google sign-in was not completed (temporarily_unavailable: the authorization server is "
                            "currently unable to handle the request due to a temporary overloading or maintenance of "
                            "the server; see https://example.org/status/incidents/2026-11-21/authorization-endpoint)."
                            "\nTry again in a few minutes.");
     }},
    {"sign-in-waiting", [](Stage& stage) { stage.startConfigured().signIn->state = SignInState::SigningIn; }},

    // --- sidebar
    {"sidebar-long-names",
     [](Stage& stage) {
         stage.startSignedInAs(kLongName, "wilhelmina.alexandrina.van.oranje-nassau-dietz@hospital.example.org");
         hover(stage, kRoot, {"Installs"});
     }},
    {"sidebar-empty-names",
     [](Stage& stage) {
         stage.startSignedInAs("", "");
         hover(stage, kRoot, {"Sign out"});
     }},
    {"sidebar-keyboard",
     [](Stage& stage) {
         stage.startSignedInAs("Ada Lovelace", "ada.lovelace@example.org");
         pressKeys(stage, {ImGuiKey_Tab, ImGuiKey_Tab});
     }},

    // --- projects
    {"projects-none", [](Stage& stage) { stage.startSignedInAs("Ada Lovelace", "ada.lovelace@example.org"); }},
    {"projects", [](Stage& stage) { stage.startWithProjects(); }},
    {"projects-row-hovered",
     [](Stage& stage) {
         stage.startWithProjects();
         hover(stage, kProjectList, {2, "##project_row"});
     }},
    {"projects-star-hovered",
     [](Stage& stage) {
         stage.startWithProjects();
         hover(stage, kProjectList, {2, "##star_toggle"});
     }},
    {"projects-row-keyboard",
     [](Stage& stage) {
         stage.startWithProjects();
         hover(stage, kRoot, {"Editor version"});
         stage.clickAt(ImGui::GetIO().MousePos); // Tab starts from the clicked item
         pressKeys(stage, {ImGuiKey_Tab, ImGuiKey_DownArrow});
     }},
    {"projects-sorted",
     [](Stage& stage) {
         LauncherApp& app = stage.startWithProjects();
         app.sortStarredFirst = true;
         app.sortColumn = ProjectSortColumn::Name;
         app.sortAscending = false;
         hover(stage, kRoot, {"Platform"});
     }},
    {"projects-search",
     [](Stage& stage) {
         stage.startWithProjects();
         typeInto(stage, kRoot, {"##ProjectSearch"}, "r e");
     }},
    {"projects-search-selected",
     [](Stage& stage) {
         stage.startWithProjects();
         typeInto(stage, kRoot, {"##ProjectSearch"}, "arthroscopy");
         stage.key(ImGuiKey_A, ImGuiMod_Ctrl);
     }},
    {"projects-no-match",
     [](Stage& stage) {
         stage.startWithProjects();
         typeInto(stage, kRoot, {"##ProjectSearch"}, "spleen");
     }},
    {"projects-missing",
     [](Stage& stage) {
         LauncherApp& app = stage.startWithProjects();
         std::vector<ProjectEntry> projects = app.settings->projects();
         projects[1] = stage.project("Old hard disk", 1, false);
         projects[4].name = "\xE8\x85\xB9\xE8\x85\x94\xE9\x8F\xA1 \xD0\x9B\xD0\xB0\xD0\xBF\xD0\xB0\xD1\x80\xD0\xBE"
                            "\xD1\x81\xD0\xBA\xD0\xBE\xD0\xBF\xD0\xB8\xD1\x8F \xE2\x99\xA5";
         projects[5].name = "A name so long that it would reach far into the column beside it if nobody stopped it";
         app.settings->setProjects(projects);
     }},
    {"projects-emoji",
     [](Stage& stage) {
         LauncherApp& app = stage.startWithProjects();
         std::vector<ProjectEntry> projects = app.settings->projects();
         projects[0].name = "\xF0\x9F\x98\x80\xF0\x9F\xAB\x80 Heart surgery";
         projects[1].name = "Appendix \xF0\x9F\x94\xAA";
         app.settings->setProjects(projects);
     }},
    {"projects-tooltip",
     [](Stage& stage) {
         LauncherApp& app = stage.startWithProjects();
         std::vector<ProjectEntry> projects = app.settings->projects();
         projects[1] =
             stage.project("A name so long that the column beside it cuts both the name and the path", 1, false);
         app.settings->setProjects(projects);
         hover(stage, kProjectList, {1, "##project_row"});
         stage.moveTo(stage.rect(kProjectList, {1, "##project_row"})->Min + uiThemePx({120.0f, 26.0f}));
     }},
    {"projects-search-keyboard",
     [](Stage& stage) {
         stage.startWithProjects();
         pressKeys(stage, {ImGuiKey_Tab, ImGuiKey_Tab, ImGuiKey_Tab, ImGuiKey_Tab});
     }},
    {"projects-zoom-80",
     [](Stage& stage) {
         stage.startWithProjects();
         stage.resize(stage.setting.width / 0.8f, stage.setting.height / 0.8f, stage.setting.scale * 0.8f);
     }},
    {"projects-200", manyProjects},
    {"projects-200-scrolled",
     [](Stage& stage) {
         manyProjects(stage);
         hover(stage, kProjectList, {3, "##project_row"});
         for (int i = 0; i < 40; ++i) {
             ImGui::GetIO().AddMouseWheelEvent(0.0f, -9.0f);
             stage.frame();
         }
     }},
    {"projects-notice",
     [](Stage& stage) {
         stage.startWithProjects().noticeText = "Installing VOLO Editor before opening this project\xE2\x80\xA6";
     }},
    {"menu",
     [](Stage& stage) {
         stage.startWithProjects();
         openMenu(stage, 1, "Show in File Manager");
     }},
    {"menu-missing",
     [](Stage& stage) {
         LauncherApp& app = stage.startWithProjects();
         app.settings->setProjects({stage.project("Old hard disk", 0, false), stage.project("Gallbladder removal")});
         openMenu(stage, 0, "Remove From List");
     }},
    {"popup-create",
     [](Stage& stage) {
         openCreatePopup(stage);
         stage.type("Hernia repair");
     }},
    {"popup-create-empty", openCreatePopup},
    {"popup-create-error",
     [](Stage& stage) {
         openCreatePopup(stage);
         stage.type("What? Why: how*");
         stage.app->createProjectError = "The project name contains characters that are not allowed.";
         hover(stage, kCreatePopup, {"Browse"});
     }},
    {"popup-create-long",
     [](Stage& stage) {
         openCreatePopup(stage);
         copyToBuffer("/media/ada/a folder that lies very deep/below many others/each with a long name/so that the "
                      "whole does not fit/into one line of the popup",
                      stage.app->newProjectLocation);
         stage.type("A project with a name that is nearly as long as the field in which it is typed, and longer");
     }},
    {"popup-create-shrunk",
     [](Stage& stage) {
         stage.resize(1590, 940, stage.setting.scale);
         openCreatePopup(stage);
         stage.resize(stage.setting.width, stage.setting.height, stage.setting.scale);
     }},
    {"popup-create-keyboard",
     [](Stage& stage) {
         openCreatePopup(stage);
         pressKeys(stage, {ImGuiKey_Tab, ImGuiKey_Tab, ImGuiKey_Tab});
     }},
    {"popup-open-error",
     [](Stage& stage) {
         LauncherApp& app = stage.startWithProjects();
         app.openErrorMessage =
             "The project no longer exists:\n" + (stage.projectsFolder / "Spleen/Spleen.zantorproj").string();
         app.openErrorRequested = true;
     }},

    // --- installs
    {"installs-idle", [](Stage& stage) { showInstall(stage, Status::Idle, ""); }},
    {"installs-none",
     [](Stage& stage) {
         stage.startSignedInAs("Ada Lovelace", "ada.lovelace@example.org").activeTab = LauncherTab::Installs;
         stage.setInstall(
             {Status::Idle, "Update server not configured. Please locate or install VOLO Editor.", 0, 0, {}});
     }},
    {"installs-checking",
     [](Stage& stage) { showInstall(stage, Status::Checking, "Checking for updates\xE2\x80\xA6"); }},
    {"installs-downloading",
     [](Stage& stage) {
         showInstall(stage, Status::Downloading, "Downloading editor 2.5.0\xE2\x80\xA6", 131 * kMegabyte,
                     348 * kMegabyte);
     }},
    {"installs-downloading-unknown",
     [](Stage& stage) {
         showInstall(stage, Status::Downloading, "Downloading editor 2.5.0\xE2\x80\xA6", 3 * kMegabyte / 2);
     }},
    {"installs-installing",
     [](Stage& stage) { showInstall(stage, Status::Installing, "Installing editor 2.5.0\xE2\x80\xA6"); }},
    {"installs-installed",
     [](Stage& stage) { showInstall(stage, Status::Installed, "Installed \xE2\x80\x94 version 2.4.1"); }},
    {"installs-offline",
     [](Stage& stage) { showInstall(stage, Status::InstalledOffline, "Installed (offline mode)"); }},
    {"installs-failed",
     [](Stage& stage) {
         showInstall(stage, Status::Failed, "The downloaded package failed its checksum verification.");
         hover(stage, kRoot, {"Retry"});
     }},

    // --- downloads
    {"downloads-none", [](Stage& stage) { showDownloads(stage, {}); }},
    {"downloads",
     [](Stage& stage) {
         showDownloads(stage,
                       {{"2.5.0", stage.packageOnDisk("2.5.0", 0), Row::Downloading, 131 * kMegabyte, 348 * kMegabyte},
                        {"2.4.3", stage.packageOnDisk("2.4.3", 346 * kMegabyte), Row::Downloaded},
                        {"2.4.2", stage.packageOnDisk("2.4.2", 345 * kMegabyte), Row::Installing},
                        {"2.4.1", stage.packageOnDisk("2.4.1", 344 * kMegabyte), Row::Installed},
                        {"2.4.0", (stage.launcherFolder / "downloads/volo-editor-2.4.0.zip").string(), Row::Failed}});
         hover(stage, kDownloadList, {4, "Retry"});
     }},
    {"downloads-unknown",
     [](Stage& stage) {
         showDownloads(stage, {{"2.5.0", stage.packageOnDisk("2.5.0", 0), Row::Downloading, kMegabyte / 3}});
     }},
    {"downloads-many",
     [](Stage& stage) {
         std::vector<DownloadRecord> rows;
         for (int i = 20; i > 0; --i)
             rows.push_back({"2.4." + std::to_string(i), "/nowhere/package.zip", Row::Failed});
         showDownloads(stage, rows);
         hover(stage, kDownloadList, {1, "Delete"});
     }},
};

} // namespace

const std::vector<Scene>& scenes() {
    return kScenes;
}
