#include "gallery/offscreen.h"

#include <cstddef>
#include <vector>

#define GL_GLEXT_PROTOTYPES
#define GLFW_INCLUDE_GLEXT
#include <GLFW/glfw3.h>
#include <imgui_impl_opengl3.h>

#define STB_IMAGE_WRITE_IMPLEMENTATION
#define STB_IMAGE_WRITE_STATIC
#include <stb_image_write.h>

bool Offscreen::open(std::string& errorText) {
    if (glfwInit() == GLFW_TRUE) {
        glfwWindowHint(GLFW_VISIBLE, GLFW_FALSE);
        glfwWindowHint(GLFW_CONTEXT_VERSION_MAJOR, 3);
        glfwWindowHint(GLFW_CONTEXT_VERSION_MINOR, 3);
        glfwWindowHint(GLFW_OPENGL_PROFILE, GLFW_OPENGL_CORE_PROFILE);
        window_ = glfwCreateWindow(64, 64, "gallery", nullptr, nullptr);
    }
    if (!window_) {
        const char* description = nullptr;
        glfwGetError(&description);
        errorText = description ? description : "no reason given";
        return false;
    }
    glfwMakeContextCurrent(window_);
    glGenFramebuffers(1, &framebuffer_);
    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer_);
    glGenRenderbuffers(1, &pixels_);
    glBindRenderbuffer(GL_RENDERBUFFER, pixels_);
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, pixels_);
    return true;
}

Offscreen::~Offscreen() {
    if (window_) glfwDestroyWindow(window_);
    glfwTerminate();
}

bool Offscreen::resize(int widthPx, int heightPx) {
    width_ = widthPx;
    height_ = heightPx;
    glRenderbufferStorage(GL_RENDERBUFFER, GL_RGBA8, width_, height_);
    return glCheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE;
}

void Offscreen::attach() {
    ImGui_ImplOpenGL3_Init("#version 330 core");
    ImGui_ImplOpenGL3_NewFrame(); // creates the shaders and buffers
}

void Offscreen::detach() {
    ImGui_ImplOpenGL3_Shutdown();
}

void Offscreen::takeTextures() {
    for (ImTextureData* texture : ImGui::GetPlatformIO().Textures)
        if (texture->Status != ImTextureStatus_OK) ImGui_ImplOpenGL3_UpdateTexture(texture);
}

void Offscreen::draw(ImDrawData& frame, const float* clearColour) const {
    glViewport(0, 0, width_, height_);
    glClearColor(clearColour[0], clearColour[1], clearColour[2], clearColour[3]);
    glClear(GL_COLOR_BUFFER_BIT);
    ImGui_ImplOpenGL3_RenderDrawData(&frame);
}

bool Offscreen::save(const std::filesystem::path& file) const {
    constexpr int kChannels = 3;
    std::vector<unsigned char> rgb(static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_) * kChannels);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, width_, height_, GL_RGB, GL_UNSIGNED_BYTE, rgb.data());
    stbi_flip_vertically_on_write(1);
    return stbi_write_png(file.string().c_str(), width_, height_, kChannels, rgb.data(), width_ * kChannels) != 0;
}
