#pragma once

// Creates a Dear ImGui context without a window. takeTextures() updates the textures of a frame as a renderer does.

#include <imgui.h>

class UiFrames {
  public:
    UiFrames()
        : context_(ImGui::CreateContext()) {
        ImGuiIO& io = ImGui::GetIO();
        io.IniFilename = nullptr;
        io.DisplaySize = {800.0f, 600.0f};
        io.BackendFlags |= ImGuiBackendFlags_RendererHasTextures;
    }
    ~UiFrames() {
        takeTextures();
        ImGui::DestroyContext(context_);
    }
    UiFrames(const UiFrames&) = delete;
    UiFrames& operator=(const UiFrames&) = delete;

    // Builds a frame in which `draw` draws the background. The frame's textures stay pending until takeTextures().
    template<typename Draw>
    const ImDrawData& build(const Draw& draw) {
        ImGui::NewFrame();
        draw(*ImGui::GetBackgroundDrawList());
        ImGui::Render();
        return *ImGui::GetDrawData();
    }

    static void takeTextures() {
        for (ImTextureData* texture : ImGui::GetPlatformIO().Textures) {
            if (texture->Status == ImTextureStatus_WantDestroy) {
                texture->SetTexID(ImTextureID_Invalid);
                texture->SetStatus(ImTextureStatus_Destroyed);
            } else if (texture->Status != ImTextureStatus_Destroyed) {
                texture->SetTexID(1);
                texture->SetStatus(ImTextureStatus_OK);
            }
        }
    }

  private:
    ImGuiContext* context_;
};
