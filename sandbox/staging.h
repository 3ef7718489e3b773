#pragma once

// The sandbox's folder: a user's home, a launcher installed for that user, and the files of the update server. One
// thread.
//
//   <root>/apps/volo/launcher/   the launcher, its font, picture and configuration, and what it installs
//   <root>/home/                 the user: AppData (Launcher.conf), Documents (projects)
//   <root>/bin/                  the browser; on Linux it is the xdg-open that comes first on PATH
//   <root>/runtime/              XDG_RUNTIME_DIR, so that the guard of a real launcher is not seen
//   <root>/site/                 the published directory
//   <root>/authority.pem         the only certificate authority that the launcher trusts
//
// The launcher looks for an editor two levels above itself: those folders hold none.

#include <filesystem>
#include <string>

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

// All return false with the reason in `failureText` when a file is missing or cannot be written.
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

// `command` opens an address, its last argument; empty: use the sandbox's own browser.
[[nodiscard]] bool stageBrowser(const SandboxPlaces& places, const std::filesystem::path& browser,
                                const std::string& command, std::string& failureText);

// The part of enterSandbox that depends on the operating system.
void enterDesktop(const SandboxPlaces& places);

// Points this program's environment, which the launcher inherits, at the sandbox.
void enterSandbox(const SandboxPlaces& places, int identityPort);

// Creates projects on disk and lists them in the user's settings, the newest first. Call after enterSandbox.
void addMadeUpProjects(const SandboxPlaces& places, int count);
