#pragma once

// Prepares the real launcher for a screenshot. The launcher uses new folders in a home folder, whose path is visible in
// the screenshots. tests/support/recording_system.h replaces the operating system.

#include <filesystem>
#include <string>
#include <vector>

#include "gallery/offscreen.h"
#include "support/ui_harness.h"

struct StageSetting {
    std::filesystem::path home;  // emptied before each screenshot
    std::filesystem::path props; // the folder of the font and of the background picture
    float width, height;         // unscaled pixels
    float scale;                 // pixels per unscaled pixel
};

class Stage : public UiHarness {
  public:
    explicit Stage(const StageSetting& setting);
    ~Stage();
    void drawOn(const Offscreen& canvas);

    LauncherApp& startConfigured();
    LauncherApp& startSignedInAs(const std::string& name, const std::string& email);
    LauncherApp& startWithProjects(); // signed in, with six projects and an installed editor

    void writeConfiguration(const std::string& text, const char* name = "launcher_config.json") const;
    void installManagedEditor(const std::string& version) const;
    [[nodiscard]] ProjectEntry project(const std::string& name, std::int64_t age = 0, bool onDisk = true) const;
    void setInstall(const InstallProgress& progress) const;
    [[nodiscard]] std::string packageOnDisk(const std::string& version, std::size_t bytes) const;

    const StageSetting& setting;
    const std::filesystem::path launcherFolder = setting.home / "VOLO Launcher";
    const std::filesystem::path projectsFolder = setting.home / "Documents/VOLO Projects";
};

// One screenshot. `play` brings the launcher into the state to show. The screenshot is taken after all animations have
// ended.
struct Scene {
    const char* name;
    void (*play)(Stage&);
};
const std::vector<Scene>& scenes();
