#pragma once

// The window: GLFW, OpenGL 3 and Dear ImGui behind one object. Main thread only.
//
// All pacing lives here. While something moves or input arrives frames follow the display's rate; once the frame that
// was built equals the one on screen and nothing is pending, beginFrame waits for events (at most 100 ms, because
// results of worker threads are collected by frames) and presentFrame shows nothing new. An iconified window presents
// nothing but goes on building frames at that bounded wait.

#include <cstdint>
#include <memory>
#include <string>

#include "ui/ui_integration.h"

struct UiHostDesc {
    const char* title = "";
    std::int32_t width = 0; // the sizes are in units at scale 1
    std::int32_t height = 0;
    std::int32_t minWidth = 0;
    std::int32_t minHeight = 0;
    const char* fontPath = "";    // UTF-8, borrowed until the host is gone; empty: Dear ImGui's built-in font
    void* parentWindow = nullptr; // for embedding; the launcher has none
    bool resizable = true;
};

class UiHost {
  public:
    UiHost();  // inactive; does not touch the window system
    ~UiHost(); // also after a failed initialize, with no shutdown before it
    UiHost(const UiHost&) = delete;
    UiHost& operator=(const UiHost&) = delete;

    // Opens the window, the graphics device and the UI context. False leaves a reason in `errorText`.
    [[nodiscard]] bool initialize(const UiHostDesc& desc, std::string& errorText);

    [[nodiscard]] bool beginFrame();                           // false: the loop is to end
    [[nodiscard]] float dpiScale() const;                      // of the monitor that the window is on, now
    [[nodiscard]] bool presentFrame(const float* clearColour); // red, green, blue, alpha; false: the loop is to end
    void shutdown();

    // While a dialog of another process holds up the frame thread: answers the window system, shows the last image
    // again where it was lost, and keeps the dialog in front. No frame is run, and what is done to the window meanwhile
    // is not passed on to one.
    void serve(std::int64_t dialog);

    // Where the window's size and place are kept between runs, UTF-8; set before initialize. Empty: nothing is read or
    // written. They are written by shutdown.
    std::string placementDirectory;

    UiIntegration* integration = nullptr; // set by initialize
    float deltaSeconds = 0.0f;            // since the frame before, set by beginFrame

  private:
    struct Window;
    std::unique_ptr<Window> window_;
};
