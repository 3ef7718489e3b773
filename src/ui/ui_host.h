#pragma once

// The window: GLFW, OpenGL 3 and Dear ImGui behind one object. Main thread only, but for wake.
//
// The host does all pacing. While something moves or input arrives, frames follow the display's rate. Once a built
// frame equals the one on screen and nothing is pending, beginFrame waits for events and presentFrame presents nothing.
// Worker threads end the wait with wake. It lasts at most a second, so that changes on disk show. A frame after a wait
// without events asks the window system nothing. An iconified window presents nothing but goes on building frames at
// that wait.

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
    const char* fontPath = "";    // UTF-8, borrowed until the host is destroyed; empty: Dear ImGui's built-in font
    void* parentWindow = nullptr; // for embedding; unused
    bool resizable = true;
};

class UiHost {
  public:
    UiHost();  // does not touch the window system
    ~UiHost(); // needs no shutdown before it
    UiHost(const UiHost&) = delete;
    UiHost& operator=(const UiHost&) = delete;

    // Opens the window, the graphics device and the UI context. False leaves a reason in `errorText`.
    [[nodiscard]] bool initialize(const UiHostDesc& desc, std::string& errorText);

    [[nodiscard]] bool beginFrame();                           // false: end the loop
    [[nodiscard]] float dpiScale() const;                      // screen coordinates per unit, with the user's zoom
    [[nodiscard]] bool presentFrame(const float* clearColour); // red, green, blue, alpha; false: end the loop
    void shutdown();                                           // saves the window's placement

    // Any thread, between initialize and shutdown: ends the wait of beginFrame.
    static void wake();

    // Call repeatedly while a dialog of the process `dialog` blocks the frame thread. Answers the window system,
    // repaints the last image after damage, keeps the dialog in front, and discards input to the window. Runs no frame.
    void repaintBehindDialog(std::int64_t dialog);

    // Asks the user to come back, as the desktop does it (the task bar flashes). Does nothing while the window has the
    // focus.
    void requestAttention();

    // Shows the progress of a download in the task bar, from 0 to 1. Negative: none runs.
    void setProgress(float fraction);

    // Shows a line over the foot of the window for some seconds. An empty text does nothing.
    void say(const std::string& text);

    // The folder of the file that holds the window's placement between runs, UTF-8. Set it before initialize. Empty:
    // the placement is neither read nor written.
    std::string placementDirectory;

    UiIntegration* integration = nullptr; // set by initialize
    float deltaSeconds = 0.0f;            // since the previous frame, set by beginFrame

  private:
    struct Window;
    std::unique_ptr<Window> window_;
};
