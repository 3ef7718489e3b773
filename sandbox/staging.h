#pragma once

// Prepares the sandbox's folder: a user's home, a launcher installed for that user, and the files of the update server.
// Use it on one thread.
//
//   <root>/apps/volo/launcher/   the launcher, its font, picture and configuration, and the editor that it installs
//   <root>/home/                 the user's home: AppData (Launcher.conf), Documents (projects)
//   <root>/bin/                  the browser; on Linux its name is xdg-open and this folder is the first on PATH
//   <root>/runtime/              XDG_RUNTIME_DIR; separates the single-instance guard from an installed launcher's
//   <root>/site/                 the published directory
//   <root>/authority.pem         the only certificate authority that the launcher trusts
//
// The launcher searches for an editor up to two levels above its folder. So its folder is deep enough that these levels
// contain no editor.

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

// All these functions return false and set `failureText` if a file is missing or cannot be written.
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

// Installs the program that opens web addresses. If `command` is empty, this is the sandbox's own browser. Otherwise it
// is `command`, with the address as its last argument.
[[nodiscard]] bool stageBrowser(const SandboxPlaces& places, const std::filesystem::path& browser,
                                const std::string& command, std::string& failureText);

// Does the part of enterSandbox that depends on the operating system.
void enterDesktop(const SandboxPlaces& places);

// Sets the environment variables of this program to the sandbox's folders. The launcher inherits them.
void enterSandbox(const SandboxPlaces& places, int identityPort);

// Creates projects on disk and adds them to the user's settings, newest first. Call it after enterSandbox.
void addMadeUpProjects(const SandboxPlaces& places, int count);
