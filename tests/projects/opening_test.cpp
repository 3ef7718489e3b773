// Tests opening, adding and creating projects.

#include "install/editor_location.h"
#include "projects_fixture.h"
#include "support/eventually.h"
#include "support/platform.h"

namespace {

constexpr const char* kAlreadyOpen = "VOLO Editor is already open.";
constexpr const char* kStartFailed = "Starting the editor process failed (error 2).";
constexpr std::int64_t kNow = 1000000; // the harness's clock

using EditorSearch = ProjectsTest;
using OpenProject = ProjectsTest;
using AddFromDisk = ProjectsTest;

TEST_F(EditorSearch, PrefersTheVariableThenTheChosenFolderThenTheNearestOne) {
    std::filesystem::remove(editor);
    app->settings->setInstallPath((folder / "chosen").string());
    system.environment["ZANTOR_DIR"] = (folder / "variable").string();
    // Each place takes precedence over the places before it.
    for (const char* place : {"launcher/editor.exe", "launcher/here/editor/bin/editor.exe", "chosen/editor.exe",
                              "variable/bin/editor.exe"}) {
        const std::string executable = folder.write(place, "").string();
        EXPECT_EQ(resolveEditorExecutable(*app), executable);
    }
}

TEST_F(OpenProject, ReportsTheFirstReasonThatPreventsIt) {
    const std::string path = projects()[1].path;
    const auto open = [&] {
        std::string error;
        return app->openProjectPath(path, error) ? "opened" : error;
    };
    app->config->editorUpdateManifestUrl = "https://h/YOUR_x";
    std::filesystem::remove(editor);
    std::filesystem::remove_all(folder / "projects/b");
    system.editorRunning = true;
    EXPECT_EQ(open(), kAlreadyOpen);
    system.editorRunning = false;
    EXPECT_EQ(open(), "VOLO Editor is not installed and automatic installation is not configured.");
    EXPECT_EQ(app->activeTab, LauncherTab::Installs);
    (void)installEditor();
    EXPECT_EQ(open(), "The project no longer exists:\n" + path);
    std::filesystem::create_directory(folder / "projects/b");
    EXPECT_EQ(open(), "opened");
}

TEST_F(OpenProject, RefusesASecondClickForTwoSecondsEvenAfterAFailedStart) {
    system.launchError = kStartFailed;
    app->openProjectRow(1);
    EXPECT_EQ(app->openErrorMessage, kStartFailed);
    EXPECT_EQ(projects()[1].lastOpened, 20) << "a failed open changes nothing";
    system.launchError.clear();
    setRecordedTime(kNow + 1);
    app->addProjectFromDisk();
    EXPECT_TRUE(system.fileDialogs.empty()) << "an added project would be opened too";
    app->openProjectRow(1);
    EXPECT_EQ(app->noticeText, kAlreadyOpen);
    EXPECT_EQ(system.launches.size(), 1u);
    setRecordedTime(kNow + 2);
    app->openProjectRow(3); // there is no row 3: nothing happens
    app->openProjectRow(1);
    EXPECT_EQ(app->noticeText, "");
    EXPECT_EQ(listed(), (Names{"b", "c", "a"}));
    EXPECT_EQ(projects()[0].lastOpened, kNow + 2);
    EXPECT_EQ(storedProjects(), projects());
}

TEST_F(OpenProject, GivesUpWaitingWhenTheInstallFails) {
    std::filesystem::remove(editor);
    app->openProjectRow(0);
    EXPECT_FALSE(app->openErrorRequested);
    EXPECT_EQ(app->noticeText, "Installing VOLO Editor before opening this project…");
    app->openProjectRow(1);
    EXPECT_EQ(app->pendingOpenProjectPath, projects()[0].path) << "a click does not replace the waiting project";
    ASSERT_TRUE(eventually([&] { return app->install->status() == EditorInstallStatus::Failed; }));
    frame();
    EXPECT_EQ(app->openErrorMessage, "Could not reach the update server, and no local editor was found.");
    EXPECT_EQ(app->pendingOpenProjectPath + app->noticeText, "");
}

TEST_F(OpenProject, WaitsUntilAnEditorIsFound) {
    app->install->startUpdate();
    ASSERT_TRUE(eventually([&] { return app->install->status() == EditorInstallStatus::InstalledOffline; }));
    std::filesystem::remove(editor);
    app->openProjectRow(1);
    frames(2);
    EXPECT_EQ(app->pendingOpenProjectPath, projects()[1].path);
    EXPECT_FALSE(popupOpen(kErrorPopup));
    (void)installEditor();
    frame();
    EXPECT_EQ(app->pendingOpenProjectPath, "");
    EXPECT_EQ(listed(), (Names{"b", "c", "a"}));
    EXPECT_EQ(projects()[0].lastOpened, kNow);
}

TEST_F(AddFromDisk, ListsANewFileFirstThenOpensIt) {
    const ProjectEntry added = {"a.b", folder.write("x/a.b.zantorproj", "").string(), "", "", kNow};
    system.launchError = kStartFailed;
    system.pickedFile = (folder / "x/../x/./a.b.zantorproj").string();
    app->noticeText = "old notice";
    app->addProjectFromDisk();
    EXPECT_EQ(system.fileDialogs.at(0).second, system.userDocumentsDirectory);
    EXPECT_EQ(projects()[0], added);
    EXPECT_EQ(storedProjects(), projects());
    EXPECT_EQ(app->settings->lastAddedLocation(), (folder / "x").string());
    EXPECT_EQ(app->noticeText, "");
    EXPECT_EQ(system.launches.at(0).argument, added.path);
    EXPECT_EQ(app->openErrorMessage, kStartFailed);
}

TEST_F(AddFromDisk, MovesAListedFileToTheFrontAndShowsNoErrorWhenItDoesNotOpen) {
    system.launchError = kStartFailed;
    system.pickedFile = projects()[1].path;
    app->addProjectFromDisk();
    EXPECT_EQ(listed(), (Names{"b", "c", "a"}));
    EXPECT_EQ(projects()[0].lastOpened, kNow);
    EXPECT_EQ(storedProjects(), projects());
    EXPECT_EQ(system.launches.size(), 1u);
    EXPECT_EQ(app->openErrorMessage, "");
}

struct CreateProject : ProjectsTest {
    std::string create(const std::string& name, const std::string& location) {
        app->beginNewProject();
        copyToBuffer(name, app->newProjectName);
        copyToBuffer(location, app->newProjectLocation);
        app->createProject();
        return app->createProjectError;
    }
};

TEST_F(CreateProject, RefusesABadNameBeforeABadLocation) {
    const std::string location = (folder / "location").string();
    folder.write("location/full/file", "");
    folder.write("location/zero", "");
    EXPECT_EQ(create("   ", ""), "Enter a project name.");
    for (const char forbidden : std::string("\"*/:<>?\\|"))
        EXPECT_EQ(create({'x', forbidden}, ""), "The project name contains characters that are not allowed.");
    EXPECT_EQ(create("ok", ""), "Choose a location for the project.");
    EXPECT_EQ(create("full", location), "That folder already exists and is not empty.");
    EXPECT_EQ(create("zero", location), "Could not create the project folder.");
    EXPECT_EQ(projects().size(), 3u);
    copyToBuffer("good", app->newProjectName);
    app->createProject();
    EXPECT_EQ(projects().size(), 4u);
    EXPECT_NE(app->createProjectError, "") << "an old error stays until the popup opens again";
}

TEST_F(CreateProject, WritesTheProjectFileAndListsTheProjectFirst) {
    const std::string location = (folder / "l").string(), name = "  Übung.";
    const std::filesystem::path projectFolder = folder / "l" / name;
    std::filesystem::create_directories(projectFolder); // an existing empty folder is accepted
    app->noticeText = "old notice";
    app->beginNewProject();
    EXPECT_EQ(app->newProjectLocation, (folder / "documents/VOLO Projects").string());
    EXPECT_EQ(create(name + "  ", location), "");
    const ProjectEntry created = {name, (projectFolder / (name + ".zantorproj")).string(), "", "", kNow};
    EXPECT_EQ(projects()[0], created);
    EXPECT_EQ(storedProjects().size(), 4u);
    EXPECT_EQ(readFileBytes(created.path), asTextFile("ZantorProject:\n  Name: " + name + "\n  FormatVersion: 1\n"));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(projectFolder), {}), 1) << "no temporary file stays";
    EXPECT_EQ(app->noticeText, "");
    EXPECT_EQ(create("second", location + "/new/deep"), "");
    EXPECT_EQ(app->settings->lastAddedLocation(), location + "/new/deep");
    EXPECT_EQ(app->settings->defaultLocation(), location) << "the first location stays the default";
}

} // namespace
