// From a project to a running editor: opening, waiting for the install, adding and creating.

#include <gtest/gtest.h>

#include "install/editor_location.h"
#include "support/eventually.h"
#include "support/platform.h"
#include "support/ui_harness.h"

namespace {

constexpr const char* kNoServer = "https://127.0.0.1:1/manifest";
constexpr const char* kAlreadyOpen = "VOLO Editor is already open.";
constexpr const char* kWaiting = "Installing VOLO Editor before opening this project…";
constexpr const char* kNotInstalled = "VOLO Editor is not installed and automatic installation is not configured.";

struct Opening : UiHarness {
    LauncherApp& begin(const std::string& manifestUrl) {
        LauncherApp& launcherApp = startSignedIn(manifestUrl);
        launcherApp.settings->setProjects({makeProject("new", 20), makeProject("old", 10)});
        return launcherApp;
    }
    bool runUntil(EditorInstallStatus status) {
        return eventually([&] { return app->install->status() == status; });
    }
    std::string path(std::size_t index) const { return app->settings->projects()[index].path; }
    RecordingSystem& system = recordingSystem();
};

TEST(EditorSearch, GoesFromTheVariableToTheNeighbourhood) {
    UiHarness ui;
    LauncherApp& app = ui.startSignedIn();
    const auto enable = [&](const std::string& place) {
        if (place.starts_with("chosen")) app.settings->setInstallPath((ui.folder / "chosen").string());
        if (place.starts_with("variable"))
            recordingSystem().environment["ZANTOR_DIR"] = (ui.folder / "variable").string();
    };
    EXPECT_EQ(resolveEditorExecutable(app), "");
    // Each place wins over those before it; the first is one level up.
    for (const std::string place : {"launcher/editor.exe", "launcher/here/editor/bin/editor.exe", "chosen/editor.exe",
                                    "variable/bin/editor.exe"}) {
        ui.folder.write(place, "");
        enable(place);
        EXPECT_EQ(resolveEditorExecutable(app), (ui.folder / place).string());
    }
    EXPECT_EQ(findEditorNearLauncher(), (ui.folder / "launcher/editor.exe").string())
        << "neither variable nor setting makes an install unnecessary";
}

TEST(OpenProject, GuardsInTheirOrder) {
    const struct {
        const char* name;
        bool running, editor, exists;
        std::string error;
        LauncherTab tab = LauncherTab::Projects;
    } cases[] = {
        {"a running editor comes first", true, false, false, kAlreadyOpen},
        {"placeholder in the manifest's address", false, false, false, kNotInstalled, LauncherTab::Installs},
        {"project gone", false, true, false, "The project no longer exists:\n"},
        {"all well", false, true, true, ""},
    };
    for (const auto& c : cases) {
        const bool opens = c.error.empty();
        Opening ui;
        if (c.editor) ui.installEditor();
        LauncherApp& app = ui.begin("https://h/YOUR_x");
        ui.system.editorRunning = c.running;
        const std::string path = c.exists ? ui.path(0) : (ui.folder / "gone/p.zantorproj").string();
        std::string error;
        EXPECT_EQ(app.openProjectPath(path, error), opens) << c.name;
        EXPECT_EQ(error, c.error.ends_with('\n') ? c.error + path : c.error) << c.name;
        EXPECT_EQ(app.activeTab, c.tab) << c.name;
        EXPECT_EQ(ui.system.launches.size(), opens ? 1u : 0u) << c.name;
        EXPECT_EQ(app.lastEditorLaunchTime, opens ? 1000000 : 0) << c.name;
        EXPECT_TRUE(app.pendingOpenProjectPath.empty()) << c.name;
    }
}

TEST(OpenProject, ASecondClickIsRefusedForTwoSecondsEvenAfterAFailedStart) {
    Opening ui;
    ui.installEditor();
    LauncherApp& app = ui.begin("");
    ui.frame();
    ui.system.launchError = "Starting the editor process failed (error 8).";
    app.openProjectRow(1);
    ui.frames(2);
    EXPECT_TRUE(ui.popupOpen(kErrorPopup));
    EXPECT_EQ(app.openErrorMessage, ui.system.launchError);
    EXPECT_EQ(app.settings->projects()[1].name, "old") << "a failed open changes nothing";
    ui.system.launchError.clear();
    setRecordedTime(1000001);
    app.openProjectRow(1);
    EXPECT_EQ(ui.system.launches.size(), 1u);
    EXPECT_EQ(app.noticeText, kAlreadyOpen);
    setRecordedTime(1000002);
    app.openProjectRow(1);
    EXPECT_EQ(ui.system.launches.size(), 2u);
    EXPECT_EQ(app.noticeText, "");
    EXPECT_EQ(app.settings->projects()[0].name, "old");
    EXPECT_EQ(app.settings->projects()[0].lastOpened, 1000002);
}

TEST(PendingOpen, AFailedInstallGivesTheProjectUpWithItsMessage) {
    Opening ui;
    LauncherApp& app = ui.begin(kNoServer);
    std::string error;
    EXPECT_FALSE(app.openProjectPath(ui.path(0), error));
    EXPECT_EQ(error, "");
    EXPECT_EQ(app.noticeText, kWaiting);
    EXPECT_EQ(app.activeTab, LauncherTab::Installs);
    app.activeTab = LauncherTab::Projects;
    app.openProjectRow(1);
    EXPECT_EQ(app.activeTab, LauncherTab::Installs) << "any click leads to the install";
    EXPECT_EQ(app.pendingOpenProjectPath, ui.path(0));

    ASSERT_TRUE(ui.runUntil(EditorInstallStatus::Failed)) << "the open started a run";
    app.updateCheckStarted = true; // the shell's own check is not what is looked at
    ui.frames(2);
    EXPECT_EQ(app.openErrorMessage, "Could not reach the update server, and no local editor was found.");
    EXPECT_TRUE(ui.popupOpen(kErrorPopup));
    EXPECT_TRUE(app.pendingOpenProjectPath.empty());
    EXPECT_EQ(app.noticeText, "");
}

TEST(PendingOpen, WaitsForTheEditorAndThenOpensOrSaysThatTheProjectIsGone) {
    for (const bool gone : {false, true}) {
        Opening ui;
        const auto editor = ui.installEditor();
        LauncherApp& app = ui.begin(kNoServer);
        ui.frame();
        ASSERT_TRUE(ui.runUntil(EditorInstallStatus::InstalledOffline));
        std::filesystem::remove(editor);
        const std::string path = ui.path(1);
        app.openProjectRow(1);
        for (int i = 0; i < 3; ++i) {
            app.activeTab = LauncherTab::Projects;
            ui.frame();
            EXPECT_EQ(app.activeTab, LauncherTab::Installs);
            EXPECT_EQ(app.pendingOpenProjectPath, path);
            EXPECT_EQ(app.noticeText, kWaiting);
            EXPECT_FALSE(ui.popupOpen(kErrorPopup));
        }
        ui.installEditor();
        if (gone) std::filesystem::remove_all(ui.folder / "projects/old");
        ui.frames(3);
        EXPECT_EQ(app.openErrorMessage, gone ? "The project no longer exists:\n" + path : "");
        EXPECT_EQ(ui.system.launches.size(), gone ? 0u : 1u);
        EXPECT_EQ(app.settings->projects()[0].name, gone ? "new" : "old");
        EXPECT_TRUE(app.pendingOpenProjectPath.empty());
        EXPECT_EQ(app.noticeText, gone ? kWaiting : "") << "stays until something empties it";
    }
}

TEST(AddFromDisk, ListsAndOpens) {
    const std::string bad = "Starting the editor process failed (error 2).";
    enum class After { Launched, Popup, Silent, Waiting, Refused, Nothing };
    const struct {
        const char* name;
        std::string picked; // below the harness's folder; empty: cancelled
        After after;
        const char* first; // name of the first entry afterwards
        std::int64_t sinceLaunch = 99;
        bool running = false, editor = true;
    } cases[] = {
        {"editor runs", "x/a.b.zantorproj", After::Refused, "new", 99, true},
        {"launched a second ago", "x/p.zantorproj", After::Refused, "new", 1},
        {"two seconds ago", "x/p.zantorproj", After::Launched, "p", 2},
        {"cancelled", "", After::Nothing, "new"},
        {"stem only", "x/a.b.zantorproj", After::Launched, "a.b"},
        {"normal form", "x/../x/./p.zantorproj", After::Launched, "p"},
        {"no stem", "x/.zantorproj", After::Launched, ".zantorproj"},
        {"new, fails", "x/p.zantorproj", After::Popup, "p"},
        {"listed", "projects/old/old.zantorproj", After::Launched, "old"},
        {"listed, fails", "projects/old/old.zantorproj", After::Silent, "old"},
        {"no editor", "projects/old/old.zantorproj", After::Waiting, "old", 99, false, false},
    };
    for (const auto& c : cases) {
        const bool refused = c.after == After::Refused, changed = !refused && c.after != After::Nothing;
        const bool isNew = changed && c.picked.starts_with("x"), tried = changed && c.after != After::Waiting;
        SCOPED_TRACE(c.name);
        Opening ui;
        ui.folder.write("x/p.zantorproj", "");
        ui.folder.write("x/.zantorproj", ""); // no extension to path rules, so the file stands for its own folder
        if (c.editor) ui.installEditor();
        LauncherApp& app = ui.begin(kNoServer);
        ui.system.editorRunning = c.running;
        if (c.after == After::Popup || c.after == After::Silent) ui.system.launchError = bad;
        if (!c.picked.empty())
            ui.system.pickedFile = ui.folder.string() + std::filesystem::path("/" + c.picked).make_preferred().string();
        app.lastEditorLaunchTime = 1000000 - c.sinceLaunch;
        app.noticeText = "before";
        app.addProjectFromDisk();

        using Dialogs = std::vector<std::pair<std::string, std::string>>;
        const Dialogs asked = {{"Open VOLO Project", (ui.folder / "documents").string()}};
        EXPECT_EQ(ui.system.fileDialogs, refused ? Dialogs() : asked);
        const std::vector<ProjectEntry>& projects = app.settings->projects();
        ASSERT_EQ(projects.size(), isNew ? 3u : 2u);
        EXPECT_EQ(projects[0].name, c.first);
        EXPECT_EQ(projects[0].lastOpened, changed ? 1000000 : 20);
        EXPECT_EQ(ui.storedProjects(), changed ? projects : std::vector<ProjectEntry>());
        EXPECT_EQ(app.settings->lastAddedLocation(), isNew ? (ui.folder / "x").string() : "");
        EXPECT_EQ(app.noticeText, refused                     ? kAlreadyOpen
                                  : c.after == After::Waiting ? kWaiting
                                  : isNew                     ? ""
                                                              : "before");
        EXPECT_EQ(app.openErrorRequested, c.after == After::Popup);
        EXPECT_EQ(app.pendingOpenProjectPath.empty(), c.after != After::Waiting);
        EXPECT_EQ(ui.system.launches.size(), tried ? 1u : 0u);
        for (const RecordedLaunch& launch : ui.system.launches)
            EXPECT_EQ(launch.argument, projects[0].path);
        if (isNew) {
            EXPECT_EQ(projects[0].path, (ui.folder / "x" / std::filesystem::path(c.picked).filename()).string());
        }
    }
}

TEST(CreateProject, NamesAndPlaces) {
    struct Case {
        std::string name, location; // below the harness's folder; "-": none
        std::string error, listedAs;
    };
    const std::string badName = "The project name contains characters that are not allowed.";
    std::vector<Case> cases = {
        {"   ", "l", "Enter a project name.", ""},
        {"a/b", "-", badName, ""}, // the name first
        {"ok", "-", "Choose a location for the project.", ""},
        {"ok", "full", "That folder already exists and is not empty.", ""},
        {"ok", "empty", "", "ok"},
        {"ok", "zero", "Could not create the project folder.", ""},
        {"  My Sim  ", "new/deep", "", "  My Sim"},
        {"dot.", "l", "", "dot."},
        {"Übung", "l", "", "Übung"},
    };
    if (!kOnWindows) cases.push_back({"tab\there", "l", "", "tab\there"}); // Windows itself has no such folder
    for (const char letter : std::string("\"*/:<>?\\|"))
        cases.push_back({std::string("x") + letter, "l", badName, ""});

    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Opening ui;
        ui.folder.write("full/ok/file", "");
        std::filesystem::create_directories(ui.folder / "empty/ok");
        ui.folder.write("zero/ok", "");
        LauncherApp& app = ui.begin("");
        app.beginNewProject();
        EXPECT_EQ(app.newProjectLocation, (ui.folder / "documents/VOLO Projects").string());
        copyToBuffer(c.name, app.newProjectName);
        const std::string location = c.location == "-" ? "" : (ui.folder / c.location).string();
        copyToBuffer(location, app.newProjectLocation);
        app.createProject();
        EXPECT_EQ(app.createProjectError, c.error);
        if (!c.error.empty()) {
            EXPECT_EQ(app.settings->projects().size(), 2u);
            EXPECT_EQ(app.settings->defaultLocation(), "");
            continue;
        }
        const std::filesystem::path folder = std::filesystem::path(location) / c.listedAs;
        const ProjectEntry expected = {c.listedAs, (folder / (c.listedAs + ".zantorproj")).string(), "", "", 1000000,
                                       false};
        EXPECT_EQ(app.settings->projects().at(0), expected);
        EXPECT_EQ(readFileBytes(expected.path),
                  asTextFile("ZantorProject:\n  Name: " + c.listedAs + "\n  FormatVersion: 1\n"));
        EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder), {}), 1) << "nothing unfinished stays";
        EXPECT_EQ(app.settings->lastAddedLocation(), location);
        EXPECT_EQ(app.settings->defaultLocation(), location);
        EXPECT_TRUE(ui.system.launches.empty());
        app.settings->setDefaultLocation("first");
        copyToBuffer("second", app.newProjectName);
        app.createProject();
        EXPECT_EQ(app.settings->defaultLocation(), "first");
    }
}

TEST(CreateProject, PopupKeepsAnOldErrorOpenAfterALaterSuccess) {
    Opening ui;
    LauncherApp& app = ui.begin("");
    ui.frames(2);
    ASSERT_TRUE(ui.click(kRoot, {"+ New project"}));
    ui.frames(3);
    ui.system.chosenFolder = (ui.folder / "chosen").string();
    ASSERT_TRUE(ui.click(kCreatePopup, {"Browse"}));
    EXPECT_EQ(ui.system.folderDialogs.at(0),
              (std::pair<std::string, std::string>("Choose project location",
                                                   (ui.folder / "documents/VOLO Projects").string())));
    for (const char* typed : {"", "Sim"}) {
        ui.type(typed); // the name has the keyboard from the start
        ASSERT_TRUE(ui.click(kCreatePopup, {"Create project"}));
        ui.frames(2);
        EXPECT_EQ(app.createProjectError, "Enter a project name.");
        ASSERT_TRUE(ui.popupOpen(kCreatePopup));
        ASSERT_TRUE(ui.click(kCreatePopup, {"##NewProjectName"}));
    }
    EXPECT_TRUE(std::filesystem::exists(ui.folder / "chosen/Sim/Sim.zantorproj"));
    ASSERT_TRUE(ui.click(kCreatePopup, {"Cancel"}));
    ASSERT_TRUE(ui.click(kRoot, {"+ New project"}));
    ui.frames(3);
    EXPECT_EQ(app.createProjectError, "");
}

} // namespace
