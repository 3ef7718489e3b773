#pragma once

// The launcher on a stage: the real one, in folders of its own below a home that the pictures show, meeting the
// recording system of the tests.

#include <filesystem>
#include <string>
#include <vector>

#include "gallery/offscreen.h"
#include "support/ui_harness.h"

struct StageSetting {
    std::filesystem::path home;  // emptied for every picture
    std::filesystem::path props; // where the font and the picture of the sign-in screen lie
    float width, height, scale;  // units, and pixels for one of them
};

class Stage : public UiHarness {
  public:
    explicit Stage(const StageSetting& setting);
    ~Stage();
    void drawOn(const Offscreen& canvas);

    LauncherApp& startConfigured();
    LauncherApp& startSignedInAs(const std::string& name, const std::string& email);
    LauncherApp& startWithProjects(); // six of them, signed in, an editor installed

    void writeConfiguration(const std::string& text, const char* name = "launcher_config.json") const;
    void installManagedEditor(const std::string& version) const;
    [[nodiscard]] ProjectEntry project(const std::string& name, std::int64_t age = 0, bool onDisk = true) const;
    void setInstall(const InstallProgress& progress) const;
    [[nodiscard]] std::string packageOnDisk(const std::string& version, std::size_t bytes) const;

    const StageSetting& setting;
    const std::filesystem::path launcherFolder = setting.home / "VOLO Launcher";
    const std::filesystem::path projectsFolder = setting.home / "Documents/VOLO Projects";
};

// A picture: its name, and what leads to what it shows. The motion that this starts has ended when it is taken.
struct Scene {
    const char* name;
    void (*play)(Stage&);
};
const std::vector<Scene>& scenes();
