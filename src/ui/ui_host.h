#pragma once

// Runs the window: GLFW, OpenGL 3 and Dear ImGui in one object. Main thread only, except wake.
//
// The host decides when frames are built and presented. While something moves or input arrives, it builds frames at the
// display's rate. presentFrame presents nothing if the frame equals the one on the screen. After several equal frames
// without input, beginFrame waits for events, for one second at most. Worker threads end the wait with wake. After a
// wait without events, beginFrame calls isAtRest, which the application sets. If it returns true, beginFrame waits
// again. Otherwise a frame begins, so that changes on disk become visible. A frame after a wait without events does not
// query the window system. For an iconified window, frames are not presented.

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "ui/ui_integration.h"

struct UiHostDesc {
    const char* title = "";
    std::int32_t width = 0; // all sizes are unscaled pixels
    std::int32_t height = 0;
    std::int32_t minWidth = 0;
    std::int32_t minHeight = 0;
    const char* fontPath = "";    // UTF-8; must outlive the host; empty: Dear ImGui's built-in font
    void* parentWindow = nullptr; // for embedding; unused
    bool resizable = true;
};

class UiHost {
  public:
    UiHost();  // makes no call to the window system
    ~UiHost(); // closes the window if shutdown has not been called
    UiHost(const UiHost&) = delete;
    UiHost& operator=(const UiHost&) = delete;

    // Opens the window, the graphics device and the UI context. On failure returns false and sets `errorText`.
    [[nodiscard]] bool initialize(const UiHostDesc& desc, std::string& errorText);

    [[nodiscard]] bool beginFrame();                           // false: end the loop
    [[nodiscard]] float dpiScale() const;                      // screen coordinates per unscaled pixel, with the zoom
    [[nodiscard]] bool presentFrame(const float* clearColour); // red, green, blue, alpha; false: end the loop
    void shutdown();                                           // saves the window's placement

    // Ends the wait of beginFrame. Any thread, between initialize and shutdown.
    static void wake();

    // Call repeatedly while a dialog of the process `dialog` blocks the frame thread. Processes the window's events,
    // repaints the last image after damage, keeps the dialog in front, and discards input. Builds no frame.
    void repaintBehindDialog(std::int64_t dialog);

    // Requests the user's attention; for example, the window's button in the task bar flashes. Does nothing if the
    // window has the focus.
    void requestAttention();

    // Shows the progress of a download in the task bar, from 0 to 1. A negative value hides it.
    void setProgress(float fraction);

    // Shows a line of text at the bottom of the window for 8 s. Does nothing if `text` is empty.
    void say(const std::string& text);

    // beginFrame calls it after a wait without events. If it returns true, beginFrame waits again instead of starting a
    // frame. Optional.
    std::function<bool()> isAtRest;

    // The folder of the file with the window's saved placement, in UTF-8. Set it before initialize. If it is empty, the
    // placement is neither read nor written.
    std::string placementDirectory;

    UiIntegration* integration = nullptr; // set by initialize
    float deltaSeconds = 0.0f;            // since the previous frame, set by beginFrame

  private:
    struct Window;
    std::unique_ptr<Window> window_;
};
