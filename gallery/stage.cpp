#include "gallery/stage.h"

#include "ui/ui_theme.h"

namespace fs = std::filesystem;

namespace {

constexpr int kSettleFrames = 30; // half a second: then all animations have ended

// Gives access to LauncherApp's private member decodingBackground, because a screenshot must wait for the decoder. C++
// allows the name of a private member in an explicit instantiation.
using PendingPicture = std::future<DecodedPicture> LauncherApp::*;
PendingPicture pendingPicture();
template<PendingPicture member>
struct Opened {
    friend PendingPicture pendingPicture() { return member; }
};
template struct Opened<&LauncherApp::decodingBackground>;

void writeFile(const fs::path& file, const std::string& bytes) {
    fs::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << bytes;
}

} // namespace

Stage::Stage(const StageSetting& stageSetting)
    : setting(stageSetting) {
    for (const fs::path& fresh : {launcherFolder, projectsFolder.parent_path(), setting.home / ".config"}) {
        fs::remove_all(fresh);
        fs::create_directories(fresh);
    }
    RecordingSystem& system = recordingSystem();
    system.launcherDirectory = launcherFolder.string();
    system.userDataDirectory = (setting.home / ".config").string();
    system.userDocumentsDirectory = (setting.home / "Documents").string();
    std::error_code thereIsNone;
    fs::copy_file(setting.props / "background.png", launcherFolder / "background.png", thereIsNone);

    uiThemeShutdown(); // because the harness has initialised the theme without a font
    integration.fontPath = (setting.props / "Roboto-Medium.ttf").string();
    uiThemeInitialize(&integration);
    resize(setting.width, setting.height, setting.scale);
    Offscreen::attach();
    present = Offscreen::takeTextures;
}

Stage::~Stage() {
    Offscreen::detach();
    app.reset();
    ImGui::GetPlatformIO().Textures.clear(); // the last frame's list still contains the background picture
}

void Stage::drawOn(const Offscreen& canvas) {
    frames(2); // the second frame starts to decode the background picture
    if (const auto& picture = app.get()->*pendingPicture(); picture.valid()) picture.wait();
    frames(kSettleFrames);
    float background[4];
    uiThemeBackgroundFloat(background);
    canvas.draw(*ImGui::GetDrawData(), background);
}

void Stage::writeConfiguration(const std::string& text, const char* name) const {
    writeFile(launcherFolder / name, text);
}

LauncherApp& Stage::startConfigured() {
    writeConfiguration(R"({"google_client_id": "client", "google_client_secret": "secret"})");
    LauncherApp& started = start();
    started.updateCheckStarted = true; // prevents a real update, because the scenes set the state of the update
    return started;
}

LauncherApp& Stage::startSignedInAs(const std::string& name, const std::string& email) {
    LauncherApp& started = startConfigured();
    started.signIn->state = SignInState::SignedIn;
    started.signIn->userName = name;
    started.signIn->userEmail = email;
    return started;
}

LauncherApp& Stage::startWithProjects() {
    installManagedEditor("2.4.1");
    LauncherApp& started = startSignedInAs("Ada Lovelace", "ada.lovelace@example.org");
    std::vector<ProjectEntry> projects = {project("Gallbladder removal", 0), project("Camera navigation", 1),
                                          project("Knee arthroscopy", 2),    project("Suturing, first steps", 3),
                                          project("Appendix, emergency", 4), project("Airway management", 5)};
    projects[1].favorite = projects[3].favorite = true;
    projects[2].editorVersion = "2.3.0";
    projects[5].targetPlatform = "Windows";
    started.settings->setProjects(projects);
    return started;
}

void Stage::installManagedEditor(const std::string& version) const {
    writeFile(launcherFolder / "editor/bin/editor.exe", "editor");
    writeFile(launcherFolder / "editor/.zantor_editor_version", version + "\n");
}

ProjectEntry Stage::project(const std::string& name, std::int64_t age, bool onDisk) const {
    const fs::path file = projectsFolder / name / (name + ".zantorproj");
    if (onDisk) writeFile(file, "{}");
    ProjectEntry entry;
    entry.name = name;
    entry.path = file.string();
    entry.lastOpened = 1000000 - age;
    return entry;
}

void Stage::setInstall(const InstallProgress& progress) const {
    app->install = std::make_unique<EditorInstallState>("", "", ArtifactAuthenticity(), progress);
}

std::string Stage::packageOnDisk(const std::string& version, std::size_t bytes) const {
    const fs::path file = launcherFolder / "downloads" / ("volo-editor-" + version + ".zip");
    writeFile(file, "");
    fs::resize_file(file, bytes);
    return file.string();
}
