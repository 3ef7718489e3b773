#pragma once

// Runs the real launcher without a window, with the operating system of recording_system.h. A test builds frames one by
// one and sends mouse and keyboard input. It finds items by their identifiers, so that it can click "Sign in" without
// knowing a position.

#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <variant>

#include <imgui_internal.h>

#include "shell/launcher_app.h"
#include "support/recording_system.h"
#include "support/temporary_folder.h"
#include "support/ui_frames.h"
#include "ui/ui_integration.h"
#include "ui/ui_theme.h"

inline constexpr const char* kRoot = "##ZantorLauncher";
inline constexpr const char* kProjectList = "##ZantorLauncher/##ProjectsTableList";
inline constexpr const char* kDownloadList = "##ZantorLauncher/##DownloadList";
inline constexpr const char* kCreatePopup = "Create a new project";
inline constexpr const char* kErrorPopup = "Cannot open project";

// The arguments of the ImGui::PushID calls around an item, then the argument of the item's own ImGui::GetID call.
using IdPath = std::initializer_list<std::variant<const char*, int>>;

class UiHarness {
  public:
    UiHarness(); // new empty folders, no configuration, the clock at 1,000,000
    ~UiHarness();
    UiHarness(const UiHarness&) = delete;
    UiHarness& operator=(const UiHarness&) = delete;

    void configure(const std::string& manifestUrl) const; // writes launcher_config.json
    LauncherApp& start() {                                // builds the launcher
        app = std::make_unique<LauncherApp>();
        return *app;
    }
    LauncherApp& startSignedIn(const std::string& manifestUrl = {});

    [[nodiscard]] std::filesystem::path installEditor() const {
        return folder.write("launcher/here/bin/editor.exe", "editor");
    }
    [[nodiscard]] ProjectEntry makeProject(const std::string& name,
                                           std::int64_t lastOpened) const; // also writes the project file
    [[nodiscard]] std::vector<ProjectEntry> storedProjects() const;        // reads them from Launcher.conf

    void resize(float width, float height, float scale = 1.0f) { // width and height are unscaled pixels
        ImGui::GetIO().DisplaySize = {width * scale, height * scale};
        uiThemeSetScale(scale);
    }
    void frame();
    void frames(int count) {
        for (int i = 0; i < count; ++i)
            frame();
    }

    // Return the rectangle of an item in the last frame, or nullopt if the item was not submitted. `window` is the
    // start of the window's name. A menu entry is found by its label.
    [[nodiscard]] std::optional<ImRect> rect(const char* window, IdPath path) const;
    [[nodiscard]] std::optional<ImRect> menuEntry(const std::string& label, bool* disabled = nullptr) const;
    [[nodiscard]] bool popupOpen(const char* name) const {
        const ImGuiWindow* window = ImGui::FindWindowByName(name);
        return window != nullptr && window->WasActive;
    }
    [[nodiscard]] bool focused(const char* window, IdPath path) const; // has the focus ring

    // Each of these functions runs a frame for every event. The clicks on items return false if the item is not there.
    bool click(const char* window, IdPath path, ImGuiMouseButton button = ImGuiMouseButton_Left) {
        return click(rect(window, path), button);
    }
    bool clickMenu(const std::string& label) { return click(menuEntry(label)); }
    bool click(const std::optional<ImRect>& item, ImGuiMouseButton button = ImGuiMouseButton_Left) {
        if (item) clickAt(item->GetCenter(), button);
        return item.has_value();
    }
    void clickAt(ImVec2 point, ImGuiMouseButton button = ImGuiMouseButton_Left);
    void moveTo(ImVec2 point) {
        ImGui::GetIO().AddMousePosEvent(point.x, point.y);
        frame();
    }
    void press(ImGuiMouseButton button) {
        ImGui::GetIO().AddMouseButtonEvent(button, true);
        frame();
    }
    void release(ImGuiMouseButton button) {
        ImGui::GetIO().AddMouseButtonEvent(button, false);
        frame();
    }
    void key(ImGuiKey pressed, ImGuiKey modifier = ImGuiKey_None);
    void type(const std::string& text) {
        ImGui::GetIO().AddInputCharactersUTF8(text.c_str());
        frame();
    }

    TemporaryFolder folder;
    const std::filesystem::path launcher = folder / "launcher/here";
    UiFrames imgui;
    UiIntegration integration;
    std::function<void()> present = UiFrames::takeTextures; // called with every built frame
    std::unique_ptr<LauncherApp> app;
};
