#include "sandbox/staging.h"

#include <array>
#include <cstddef>
#include <fstream>
#include <system_error>
#include <utility>
#include <vector>

#include "config/launcher_settings.h"
#include "sandbox/child_process.h"
#include "system/operating_system.h"

namespace {

namespace fs = std::filesystem;

constexpr char kFont[] = "Roboto-Medium.ttf";
constexpr char kPicture[] = "background.png";

bool copyFont(const fs::path& from, const fs::path& toFolder, std::string& failureText) {
    return copyProgram(from / kFont, toFolder / kFont, failureText);
}

} // namespace

bool writeText(const fs::path& file, const std::string& text, std::string& failureText) {
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    out << text;
    out.close();
    if (out.fail()) failureText = "cannot write " + file.string();
    return !out.fail();
}

// Removes the old file first: Linux allows this for a running program, but not a write to its file (ETXTBSY).
bool copyProgram(const fs::path& from, const fs::path& to, std::string& failureText) {
    std::error_code error;
    fs::remove(to, error);
    if (fs::copy_file(from, to, error)) return true;
    failureText = "cannot copy " + from.string() + ": " + error.message();
    return false;
}

SandboxPlaces::SandboxPlaces(const fs::path& rootFolder)
    : root(rootFolder)
    , launcher(root / "apps" / "volo" / "launcher")
    , home(root / "home")
    , applicationData(home / "AppData")
    , documents(home / "Documents")
    , bin(root / "bin")
    , runtime(root / "runtime")
    , site(root / "site")
    , authority(root / "authority.pem")
    , browserLog(root / "browser.log") {}

bool makePlaces(const SandboxPlaces& places, std::string& failureText) {
    std::error_code error;
    for (const fs::path& folder :
         {places.launcher, places.applicationData, places.documents, places.bin, places.runtime, places.site}) {
        fs::create_directories(folder, error);
        if (error) {
            failureText = "cannot make " + folder.string() + ": " + error.message();
            return false;
        }
    }
    allowOnlyOwner(places.root.string());
    allowOnlyOwner(places.runtime.string());
    return writeText(places.browserLog, "", failureText);
}

bool stageLauncher(const SandboxPlaces& places, const fs::path& program, const LauncherConfiguration& configuration,
                   std::string& failureText) {
    const fs::path assets = launcherDirectory(); // the shipped launcher is in the same folder as this program
    std::error_code error;
    fs::copy_file(assets / kPicture, places.launcher / kPicture, fs::copy_options::overwrite_existing, error);

    std::string text = "{\n";
    const std::array<std::pair<const char*, const std::string&>, 5> members = {{
        {"google_client_id", configuration.clientId},
        {"google_client_secret", configuration.clientSecret},
        {"editor_update_manifest_url", configuration.manifestUrl},
        {"artifact_authenticity_url", configuration.authenticityUrl},
        {"artifact_authenticity_keys", configuration.authenticityKeys},
    }};
    for (const auto& [key, value] : members)
        text += "  \"" + std::string(key) + "\": \"" + value + "\",\n";
    text += "  \"downloads_directory\": \"downloads\"\n}\n";
    return copyProgram(program, places.launcher / kLauncherProgram, failureText) &&
           copyFont(assets, places.launcher, failureText) &&
           writeText(places.launcher / "launcher_config.json", text, failureText);
}

bool stageEditor(const SandboxPlaces& places, const fs::path& program, const std::string& version,
                 std::string& failureText) {
    const fs::path folder = places.launcher / "editor";
    std::error_code error;
    fs::create_directories(folder, error);
    return copyProgram(program, folder / "editor.exe", failureText) &&
           copyFont(launcherDirectory(), folder, failureText) &&
           writeText(folder / ".zantor_editor_version", version + "\n", failureText);
}

void enterSandbox(const SandboxPlaces& places, int identityPort) {
    enterDesktop(places);
    setEnvironment("APPDATA", places.applicationData.string());
    setEnvironment("USERPROFILE", places.home.string());
    unsetEnvironment("ZANTOR_DIR");
    setEnvironment("SSL_CERT_FILE", places.authority.string());
    setEnvironment("SSL_CERT_DIR", places.runtime.string()); // a folder without certificates
    setEnvironment("VOLO_SANDBOX_IDENTITY_PORT", std::to_string(identityPort));
    setEnvironment("VOLO_SANDBOX_BROWSER_LOG", places.browserLog.string());
}

void addMadeUpProjects(const SandboxPlaces& places, int count) {
    constexpr std::array<const char*, 8> kNames = {"Cholecystectomy", "Appendectomy",       "Hernia repair",
                                                   "Colonoscopy",     "Knee arthroscopy",   "Suturing basics",
                                                   "Airway access",   "Ultrasound guidance"};
    LauncherSettings settings;
    (void)settings.load();
    std::vector<ProjectEntry> projects;
    for (int number = 0; number < count; ++number) {
        const auto round = static_cast<std::size_t>(number) / kNames.size();
        ProjectEntry entry;
        entry.name = kNames[static_cast<std::size_t>(number) % kNames.size()];
        if (round > 0) entry.name += " " + std::to_string(round + 1);
        const fs::path folder = places.documents / "VOLO Projects" / entry.name;
        entry.path = (folder / (entry.name + ".zantorproj")).string();
        entry.lastOpened = currentTimeSeconds() - 3600LL * (number + 1);
        entry.favorite = number % 7 == 2;
        std::error_code error;
        fs::create_directories(folder, error);
        std::string ignored;
        (void)writeText(entry.path, "ZantorProject:\n  Name: " + entry.name + "\n  FormatVersion: 1\n", ignored);
        projects.push_back(entry);
    }
    settings.setProjects(projects);
    (void)settings.save();
}
