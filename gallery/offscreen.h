#pragma once

// A picture that nobody sees while it is drawn: what the launcher's frames look like, by the same renderer that shows
// them in its window. One at a time, main thread only; needs a display, on which nothing appears.

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

    // For the current Dear ImGui context: its textures live from one to the other.
    static void attach();
    static void detach();
    static void takeTextures(); // of a frame that is not drawn

    void draw(ImDrawData& frame, const float* clearColour) const;
    [[nodiscard]] bool save(const std::filesystem::path& file) const; // as PNG

  private:
    GLFWwindow* window_ = nullptr;
    unsigned framebuffer_ = 0; // of its own: the pixels of a window that is not shown are nobody's
    unsigned pixels_ = 0;
    int width_ = 0;
    int height_ = 0;
};
