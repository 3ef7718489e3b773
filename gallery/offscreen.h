#pragma once

// Draws frames of the launcher into an image, with the same renderer as the launcher's window. It needs a display, but
// shows nothing on it. Create only one object at a time. Main thread only.

#include <filesystem>
#include <string>

#include <imgui.h>

struct GLFWwindow;

class Offscreen {
  public:
    Offscreen() = default;
    ~Offscreen();
    Offscreen(const Offscreen&) = delete;
    Offscreen& operator=(const Offscreen&) = delete;

    [[nodiscard]] bool open(std::string& errorText);
    [[nodiscard]] bool resize(int widthPx, int heightPx);

    // Attach the renderer to the current Dear ImGui context, and detach it. The renderer's textures exist between these
    // two calls.
    static void attach();
    static void detach();
    static void takeTextures(); // uploads the textures of a frame; call it for each frame that is not drawn

    void draw(ImDrawData& frame, const float* clearColour) const;
    [[nodiscard]] bool save(const std::filesystem::path& file) const; // as PNG

  private:
    GLFWwindow* window_ = nullptr;
    unsigned framebuffer_ = 0; // needed because OpenGL does not keep the pixels of a hidden window
    unsigned pixels_ = 0;
    int width_ = 0;
    int height_ = 0;
};
