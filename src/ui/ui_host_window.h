#pragma once

// Declares the private part of UiHost: the GLFW window, the Dear ImGui context and its backends, and the window's saved
// placement. Main thread only. Only the sources of UiHost include this header.

#include <array>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include <imgui.h>

#include "ui/ui_host.h"
#include "ui/ui_pacing.h"
#include "ui/ui_placement.h"

struct GLFWcursor;
struct GLFWwindow;

// A copy of the frame on the screen, for repaints. Dear ImGui reuses a frame's draw lists when the next frame begins.
struct LastImage {
    void keep(const ImDrawData& shown, std::span<const float, 4> clearColour);
    void forget();

    ImDrawData frame;
    std::array<float, 4> clear{};
};

struct UiHost::Window {
    UiIntegration integration;
    UiHostDesc desc;
    std::filesystem::path placementFile; // empty: the placement is neither read nor written
    std::optional<WindowPlacement> placement;

    bool glfwStarted = false;
    GLFWwindow* handle = nullptr;
    ImGuiContext* context = nullptr;
    bool platformReady = false;
    bool rendererReady = false;
    const char* shaderVersion = nullptr;

    FramePacer pacer;
    LastImage lastImage;
    GLFWcursor* shownPointer = nullptr; // null: the backend's
    int zoom = 100;                     // percent
    double placementChangedAt = 0.0;    // time of the last change, by glfwGetTime; 0: the change has been saved
    int progressPercent = -1;           // in the task bar; -1: none
    std::string footLine;
    double footLineUntil = 0.0;     // by ImGui::GetTime
    bool behindDialog = false;      // true while repaintBehindDialog polls for events
    std::int64_t dialogInFront = 0; // the process whose windows were made transient last
    float scale = 0.0f;             // screen coordinates per unscaled pixel, including the zoom

    ~Window();
    [[nodiscard]] bool open(std::string& errorText);
    [[nodiscard]] bool isUntouched() const; // true if neither an event nor a timer changes the next frame
    void repaintDamage();
    void draw(ImDrawData& frame, std::span<const float, 4> clear) const;
    void showPointer();
    void followScale();
    void rememberPlacement();
    void rememberSettledPlacement(); // saves a change half a second after the last change
    void zoomBy(int steps);          // 0 steps: sets the zoom to 100%
    static void notePointer(GLFWwindow* source);

  private:
    static Window& of(GLFWwindow* source);
    static void noteEvent(GLFWwindow* source);
    static void noteDamage(GLFWwindow* source);
    static void notePlacement(GLFWwindow* source);
    static void noteKey(GLFWwindow* source, int key, int scanCode, int action, int modifiers);
    [[nodiscard]] bool createWindow(std::string& errorText);
    [[nodiscard]] bool createHandle(int contextApi, std::string& reason);
    [[nodiscard]] bool createContext(std::string& errorText);
    void setIcon();
    void watchEvents();
    void show();
    void place();
    void limitSize();
    [[nodiscard]] float contentScale() const;
    [[nodiscard]] std::vector<ScreenArea> contentAreas() const;
    [[nodiscard]] ScreenArea minimumSize(int atZoom) const;
};
