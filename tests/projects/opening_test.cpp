// From a project to a running editor: opening, waiting for the install, adding and creating.

#include <functional>

#include <gtest/gtest.h>

#include "install/editor_location.h"
#include "sandbox/certificate_authority.h"
#include "support/eventually.h"
#include "support/scoped_environment.h"
#include "support/tls_server.h"
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
    struct Place {
        const char* editor;
        std::function<void()> enable;
    };
    // Each place wins over those before it.
    const std::vector<Place> places = {
        {"launcher/editor.exe", [] {}}, // one level up
        {"launcher/here/editor/bin/editor.exe", [] {}},
        {"chosen/editor.exe", [&] { app.settings->setInstallPath((ui.folder / "chosen").string()); }},
        {"variable/bin/editor.exe",
         [&] { recordingSystem().environment["ZANTOR_DIR"] = (ui.folder / "variable").string(); }}};
    EXPECT_EQ(resolveEditorExecutable(app), "");
    for (const Place& place : places) {
        ui.folder.write(place.editor, "");
        place.enable();
        EXPECT_EQ(resolveEditorExecutable(app), (ui.folder / place.editor).string());
    }
    EXPECT_EQ(findEditorNearLauncher(), (ui.folder / "launcher/editor.exe").string())
        << "neither variable nor setting makes an install unnecessary";
}

TEST(OpenProject, GuardsInTheirOrder) {
    struct Case {
        const char* name;
        bool running, editor, exists;
        const char* manifest;
        std::string error;
        LauncherTab tab;
        std::size_t launches;
    };
    for (const Case& c :
         {Case{"a running editor comes first", true, false, false, "", kAlreadyOpen, LauncherTab::Projects, 0},
          {"placeholder in the middle", false, false, false, "https://h/YOUR_x", kNotInstalled, LauncherTab::Installs,
           0},
          {"project gone", false, true, false, "", "The project no longer exists:\n", LauncherTab::Projects, 0},
          {"all well", false, true, true, "", "", LauncherTab::Projects, 1}}) {
        Opening ui;
        if (c.editor) ui.installEditor();
        LauncherApp& app = ui.begin(c.manifest);
        ui.system.editorRunning = c.running;
        const std::string path = c.exists ? ui.path(0) : (ui.folder / "gone/p.zantorproj").string();
        std::string error;
        EXPECT_EQ(app.openProjectPath(path, error), c.launches == 1) << c.name;
        EXPECT_EQ(error, c.error.ends_with('\n') ? c.error + path : c.error) << c.name;
        EXPECT_EQ(app.activeTab, c.tab) << c.name;
        EXPECT_EQ(ui.system.launches.size(), c.launches) << c.name;
        EXPECT_EQ(app.lastEditorLaunchTime, c.launches == 1 ? 1000000 : 0) << c.name;
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
    EXPECT_TRUE(ui.click(kErrorPopup, {"OK"}));
    ui.frames(2);
    EXPECT_FALSE(ui.popupOpen(kErrorPopup));

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
    for (const int index : {-1, 2, 99})
        app.openProjectRow(index);
    EXPECT_EQ(ui.system.launches.size(), 2u);
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

// The run in which the editor turns up is under way when the project is opened.
TEST(PendingOpen, WaitsWhileARunIsBusyAndOpensWhenItEnds) {
    Opening ui;
    const CertificateAuthority authority;
    ASSERT_TRUE(authority.writeRoot((ui.folder / "root.pem").string()));
    const ScopedEnvironment trust("SSL_CERT_FILE", (ui.folder / "root.pem").string());
    auto server = std::make_unique<TlsServer>(authority.issue({{"localhost"}, {"127.0.0.1"}, "localhost"}),
                                              [](TlsConnection& connection) { connection.stall(); });
    LauncherApp& app = ui.begin("https://127.0.0.1:" + std::to_string(server->port()) + "/m");
    ui.frame(); // the shell's check hangs
    app.openProjectRow(1);
    const std::string path = ui.path(1);
    ui.frames(5);
    EXPECT_EQ(app.install->status(), EditorInstallStatus::Checking);
    EXPECT_EQ(app.pendingOpenProjectPath, path);
    EXPECT_TRUE(ui.system.launches.empty());

    ui.installEditor();
    server.reset();
    ASSERT_TRUE(ui.runUntil(EditorInstallStatus::InstalledOffline));
    app.signIn->state = SignInState::SignedOut; // also without the shell
    ui.frame();
    ASSERT_EQ(ui.system.launches.size(), 1u);
    EXPECT_EQ(ui.system.launches[0].argument, path);
    EXPECT_EQ(app.settings->projects()[0].path, path);
    EXPECT_EQ(ui.storedProjects().at(0).lastOpened, 1000000);
    EXPECT_EQ(app.noticeText, "");
    ui.frames(2);
    EXPECT_EQ(ui.system.launches.size(), 1u);
}

TEST(PendingOpen, AnEditorThatVanishedKeepsItWaitingAndAGoneProjectIsTold) {
    Opening ui;
    const auto editor = ui.installEditor();
    LauncherApp& app = ui.begin(kNoServer);
    ui.frame();
    ASSERT_TRUE(ui.runUntil(EditorInstallStatus::InstalledOffline));
    std::filesystem::remove(editor);
    const std::string path = ui.path(0);
    app.openProjectRow(0);
    for (int i = 0; i < 3; ++i) {
        app.activeTab = LauncherTab::Projects;
        ui.frame();
        EXPECT_EQ(app.activeTab, LauncherTab::Installs);
        EXPECT_EQ(app.pendingOpenProjectPath, path);
        EXPECT_EQ(app.noticeText, kWaiting);
        EXPECT_FALSE(ui.popupOpen(kErrorPopup));
    }
    ui.installEditor();
    std::filesystem::remove_all(ui.folder / "projects/new");
    ui.frame();
    EXPECT_EQ(app.openErrorMessage, "The project no longer exists:\n" + path);
    EXPECT_TRUE(app.pendingOpenProjectPath.empty());
    EXPECT_EQ(app.noticeText, kWaiting) << "stays until something empties it";
}

TEST(AddFromDisk, ListsAndOpens) {
    enum class After { Launched, Popup, Silent, Waiting, Refused, Nothing };
    struct Case {
        const char* name;
        const char* picked; // below the harness's folder; empty: cancelled
        bool running;
        std::int64_t sinceLaunch;
        bool editor;
        std::string launchError;
        After after;
        const char* first; // name of the first entry afterwards
        std::size_t count;
    };
    const std::string bad = "Starting the editor process failed (error 2).";
    for (const Case& c :
         {Case{"editor runs", "x/a.b.zantorproj", true, 99, true, "", After::Refused, "new", 2},
          {"launched a second ago", "x/p.zantorproj", false, 1, true, "", After::Refused, "new", 2},
          {"two seconds ago", "x/p.zantorproj", false, 2, true, "", After::Launched, "p", 3},
          {"cancelled", "", false, 99, true, "", After::Nothing, "new", 2},
          {"stem only", "x/a.b.zantorproj", false, 99, true, "", After::Launched, "a.b", 3},
          {"normal form", "x/../x/./p.zantorproj", false, 99, true, "", After::Launched, "p", 3},
          {"no stem", "x/.zantorproj", false, 99, true, "", After::Launched, ".zantorproj", 3},
          {"new, fails", "x/p.zantorproj", false, 99, true, bad, After::Popup, "p", 3},
          {"listed", "projects/old/old.zantorproj", false, 99, true, "", After::Launched, "old", 2},
          {"listed, fails", "projects/old/old.zantorproj", false, 99, true, bad, After::Silent, "old", 2},
          {"no editor", "projects/old/old.zantorproj", false, 99, false, "", After::Waiting, "old", 2}}) {
        SCOPED_TRACE(c.name);
        Opening ui;
        ui.folder.write("x/p.zantorproj", "");
        ui.folder.write("x/.zantorproj", ""); // no extension to path rules, so the file stands for its own folder
        if (c.editor) ui.installEditor();
        LauncherApp& app = ui.begin(kNoServer);
        ui.system.editorRunning = c.running;
        ui.system.launchError = c.launchError;
        if (*c.picked) ui.system.pickedFile = ui.folder.string() + "/" + c.picked;
        app.lastEditorLaunchTime = 1000000 - c.sinceLaunch;
        app.noticeText = "before";
        app.addProjectFromDisk();

        const bool refused = c.after == After::Refused, isNew = c.count == 3;
        ASSERT_EQ(ui.system.fileDialogs.size(), refused ? 0u : 1u);
        if (!refused) {
            EXPECT_EQ(ui.system.fileDialogs[0],
                      (std::pair<std::string, std::string>("Open VOLO Project", (ui.folder / "documents").string())));
        }
        ASSERT_EQ(app.settings->projects().size(), c.count);
        EXPECT_EQ(app.settings->projects()[0].name, c.first);
        const bool changed = !refused && c.after != After::Nothing;
        EXPECT_EQ(app.settings->projects()[0].lastOpened, changed ? 1000000 : 20);
        EXPECT_EQ(ui.storedProjects().size(), changed ? c.count : 0);
        EXPECT_EQ(app.settings->lastAddedLocation(), isNew ? (ui.folder / "x").string() : "");
        EXPECT_EQ(app.noticeText, refused                     ? kAlreadyOpen
                                  : c.after == After::Waiting ? kWaiting
                                  : isNew                     ? ""
                                                              : "before");
        EXPECT_EQ(app.openErrorRequested, c.after == After::Popup);
        EXPECT_EQ(app.pendingOpenProjectPath.empty(), c.after != After::Waiting);
        const bool tried = c.after == After::Launched || c.after == After::Popup || c.after == After::Silent;
        ASSERT_EQ(ui.system.launches.size(), tried ? 1u : 0u);
        if (tried) {
            EXPECT_EQ(ui.system.launches[0].argument, app.settings->projects()[0].path);
        }
        if (isNew) {
            EXPECT_EQ(app.settings->projects()[0].path,
                      (ui.folder / "x" / std::filesystem::path(c.picked).filename()).string());
        }
    }
}

TEST(CreateProject, NamesAndPlaces) {
    struct Case {
        const char* name;
        std::string location; // below the harness's folder; "-": none
        std::string error;
        std::string listedAs;
    };
    const std::string badName = "The project name contains characters that are not allowed.";
    std::vector<Case> cases = {{"   ", "l", "Enter a project name.", ""},
                               {"a/b", "-", badName, ""}, // the name first
                               {"ok", "-", "Choose a location for the project.", ""},
                               {"ok", "full", "That folder already exists and is not empty.", ""},
                               {"ok", "empty", "", "ok"},
                               {"ok", "zero", "Could not create the project folder.", ""},
                               {"  My Sim  ", "new/deep", "", "  My Sim"},
                               {"dot.", "l", "", "dot."},
                               {"tab\there", "l", "", "tab\there"},
                               {"\xC3\x9C"
                                "bung",
                                "l", "",
                                "\xC3\x9C"
                                "bung"}};
    static const std::string forbidden = "\"*/:<>?\\|";
    std::vector<std::string> names;
    for (const char letter : forbidden)
        names.push_back(std::string("x") + letter);
    for (const std::string& name : names)
        cases.push_back({name.c_str(), "l", badName, ""});

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
        EXPECT_EQ(readFileBytes(expected.path), "ZantorProject:\n  Name: " + c.listedAs + "\n  FormatVersion: 1\n");
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
    EXPECT_EQ(app.newProjectLocation, ui.system.chosenFolder);

    ASSERT_TRUE(ui.click(kCreatePopup, {"Create project"}));
    ui.frames(2);
    EXPECT_EQ(app.createProjectError, "Enter a project name.");
    ASSERT_TRUE(ui.popupOpen(kCreatePopup));
    ASSERT_TRUE(ui.click(kCreatePopup, {"##NewProjectName"}));
    ui.type("Sim");
    ASSERT_TRUE(ui.click(kCreatePopup, {"Create project"}));
    ui.frames(2);
    EXPECT_TRUE(std::filesystem::exists(ui.folder / "chosen/Sim/Sim.zantorproj"));
    EXPECT_EQ(app.createProjectError, "Enter a project name.");
    EXPECT_TRUE(ui.popupOpen(kCreatePopup));
    ASSERT_TRUE(ui.click(kCreatePopup, {"Cancel"}));
    ui.frames(2);
    EXPECT_FALSE(ui.popupOpen(kCreatePopup));
    EXPECT_EQ(app.createProjectError, "Enter a project name.");

    ASSERT_TRUE(ui.click(kRoot, {"+ New project"}));
    ui.frames(3);
    EXPECT_EQ(app.createProjectError, "");
    ui.type("Next"); // the name has the keyboard from the start
    EXPECT_STREQ(app.newProjectName, "Next");
    ASSERT_TRUE(ui.click(kCreatePopup, {"Create project"}));
    ui.frames(2);
    EXPECT_FALSE(ui.popupOpen(kCreatePopup));
    EXPECT_EQ(app.settings->projects().at(0).name, "Next");
}

} // namespace
