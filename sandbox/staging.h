#pragma once

// The sandbox's folder: a user's home, a launcher that is installed for that user, and the files that the servers
// serve.
//
//   <root>/apps/volo/launcher/   the launcher, its font, picture and configuration, and what it installs
//   <root>/home/                 the user: AppData (Launcher.conf), Documents (projects)
//   <root>/bin/                  the browser, on Linux as the xdg-open that the launcher finds first
//   <root>/runtime/              this session's, so that a real launcher's guard and the sandbox's do not meet
//   <root>/site/                 what the update server serves
//   <root>/authority.pem         the only certificate authority that the launcher trusts
//
// The launcher looks for an editor two levels above itself: nothing of that kind lies there.

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

struct SandboxPlaces {
    explicit SandboxPlaces(const std::filesystem::path& rootFolder);

    std::filesystem::path root, launcher, home, applicationData, documents, bin, runtime, site, authority, browserLog;
};

struct LauncherConfiguration {
    std::string clientId;
    std::string clientSecret;
    std::string manifestUrl;
    std::string authenticityUrl;
    std::string authenticityKeys;
};

// All return false and say why when something could not be written or was not built.
[[nodiscard]] bool makePlaces(const SandboxPlaces& places, std::string& failureText);
[[nodiscard]] bool stageLauncher(const SandboxPlaces& places, const std::filesystem::path& program,
                                 const LauncherConfiguration& configuration, std::string& failureText);
[[nodiscard]] bool stageEditor(const SandboxPlaces& places, const std::filesystem::path& program,
                               const std::string& version, std::string& failureText);

// The file names of programs.
#ifdef _WIN32
inline constexpr char kLauncherProgram[] = "volo-launcher.exe";
inline constexpr char kBrowserProgram[] = "volo-sandbox-browser.exe";
inline constexpr char kSampleEditorProgram[] = "volo-sample-editor.exe";
#else
inline constexpr char kLauncherProgram[] = "volo-launcher";
inline constexpr char kBrowserProgram[] = "volo-sandbox-browser";
inline constexpr char kSampleEditorProgram[] = "volo-sample-editor";
#endif

[[nodiscard]] bool writeText(const std::filesystem::path& file, const std::string& text, std::string& failureText);
[[nodiscard]] bool copyProgram(const std::filesystem::path& from, const std::filesystem::path& to,
                               std::string& failureText);

// `command` is what opens addresses, started with the address behind it; empty: the sandbox's own browser.
[[nodiscard]] bool stageBrowser(const SandboxPlaces& places, const std::filesystem::path& browser,
                                const std::string& command, std::string& failureText);

// Keeps what the operating system's desktop would tell apart from the user's own. A part of enterSandbox.
void enterDesktop(const SandboxPlaces& places);

// Points this program's environment, which the launcher inherits, at the sandbox.
void enterSandbox(const SandboxPlaces& places, int identityPort);

// Makes projects on disk and lists them in the user's settings, the newest first. Inside the sandbox only.
void addMadeUpProjects(const SandboxPlaces& places, int count);
