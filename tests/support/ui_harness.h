#pragma once

// The real launcher without a window: a Dear ImGui context that no screen shows, frames on request, mouse and keys fed
// in as a host would feed them, and items found by their identifiers, so that a test clicks "Sign in" and not a point.

#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>

#include <imgui_internal.h>

#include "shell/launcher_app.h"
#include "support/recording_system.h"
#include "support/temporary_folder.h"
#include "support/ui_frames.h"
#include "ui/ui_integration.h"

inline constexpr const char* kRoot = "##ZantorLauncher";
inline constexpr const char* kProjectList = "##ZantorLauncher/##ProjectsTableList";
inline constexpr const char* kDownloadList = "##ZantorLauncher/##DownloadList";
inline constexpr const char* kCreatePopup = "Create a new project";
inline constexpr const char* kErrorPopup = "Cannot open project";

// One step of an identifier: what ImGui::PushID or ImGui::GetID was given.
struct IdStep {
    IdStep(const char* pushedText)
        : text(pushedText) {}
    IdStep(int pushedNumber)
        : number(pushedNumber) {}
    const char* text = nullptr;
    int number = 0;
};
using IdPath = std::initializer_list<IdStep>;

class UiHarness {
  public:
    UiHarness(); // fresh folders, no configuration, the clock at 1,000,000
    ~UiHarness();
    UiHarness(const UiHarness&) = delete;
    UiHarness& operator=(const UiHarness&) = delete;

    void configure(const std::string& manifestUrl = {}) const; // writes launcher_config.json
    LauncherApp& start();                                      // builds the launcher
    LauncherApp& startSignedIn(const std::string& manifestUrl = {});

    std::filesystem::path installEditor(const std::filesystem::path& below = "launcher/here/bin") const;
    ProjectEntry makeProject(const std::string& name, std::int64_t lastOpened) const; // with its folder on disk
    std::vector<ProjectEntry> storedProjects() const;                                 // read back from Launcher.conf

    void resize(float width, float height, float scale = 1.0f);
    void frame();
    void frames(int count);
    double frameMilliseconds(); // processor time of one frame

    // Where an item stood in the last frame; nothing when it was not submitted. A window is named by the start of its
    // name; a stock menu entry is found by its label in any window.
    [[nodiscard]] std::optional<ImRect> rect(const char* window, IdPath path) const;
    [[nodiscard]] std::optional<ImRect> menuEntry(const std::string& label, bool* disabled = nullptr) const;
    [[nodiscard]] ImGuiID identify(const char* window, IdPath path) const; // 0: not submitted in the last frame
    [[nodiscard]] bool popupOpen(const char* name) const;

    // All return whether the item was there; a frame each for the pointer, the press and the release.
    bool click(const char* window, IdPath path, ImGuiMouseButton button = ImGuiMouseButton_Left);
    bool clickMenu(const std::string& label);
    void clickAt(ImVec2 point, ImGuiMouseButton button = ImGuiMouseButton_Left);
    void moveTo(ImVec2 point);
    void press(ImGuiMouseButton button);
    void release(ImGuiMouseButton button);
    void key(ImGuiKey pressed);
    void type(const std::string& text);

    TemporaryFolder folder;
    const std::filesystem::path launcher = folder / "launcher/here";
    UiFrames imgui;
    UiIntegration integration;
    std::function<void()> present = UiFrames::takeTextures; // what becomes of a built frame
    std::unique_ptr<LauncherApp> app;
};
