#include "ui/ui_host.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <filesystem>
#include <span>

#include <GLFW/glfw3.h>
#include <imgui.h>
#include <imgui_impl_glfw.h>
#include <imgui_impl_opengl3.h>
#include <imgui_internal.h>

#include "ui/ui_host_platform.h"
#include "ui/ui_host_window.h"
#include "ui/ui_keyboard.h"
#include "ui/ui_pacing.h"
#include "ui/ui_popups.h"

namespace {

constexpr const char* kPlacementFile = "Launcher.window";
constexpr double kFootLineSeconds = 8.0;

std::atomic<bool> woken = false; // true if wake was called since the last wait

} // namespace

UiHost::UiHost() = default;
UiHost::~UiHost() = default;

bool UiHost::initialize(const UiHostDesc& desc, std::string& errorText) {
    window_ = std::make_unique<Window>();
    window_->desc = desc;
    window_->integration.fontPath = desc.fontPath ? desc.fontPath : "";
    if (!placementDirectory.empty())
        window_->placementFile =
            std::filesystem::path(std::u8string(placementDirectory.begin(), placementDirectory.end())) / kPlacementFile;
    if (!window_->open(errorText)) {
        window_.reset();
        return false;
    }
    integration = &window_->integration;
    return true;
}

void UiHost::shutdown() {
    if (window_) window_->rememberPlacement();
    integration = nullptr;
    window_.reset();
}

float UiHost::dpiScale() const {
    return window_ ? window_->scale : 1.0f;
}

bool UiHost::beginFrame() {
    Window& window = *window_;
    FramePacer& pacer = window.pacer;
    if (pacer.idle()) {
        bool nothingHappened = true;
        do {
            const double end = glfwGetTime() + pacer.idleWaitSeconds();
            // The wait also ends early for events that change no frame: GLFW 3.4 animates pointers on Wayland.
            do {
                glfwWaitEventsTimeout(std::max(end - glfwGetTime(), 0.0));
                window.rememberSettledPlacement();
                nothingHappened = !woken.exchange(false) && window.isUntouched();
            } while (nothingHappened && glfwGetTime() < end);
        } while (nothingHappened && isAtRest && isAtRest());
    } else {
        double wait = pacer.secondsUntilDue(glfwGetTime());
        while (wait > 0.0) {
            glfwWaitEventsTimeout(wait);
            wait = pacer.secondsUntilDue(glfwGetTime());
        }
        glfwPollEvents();
    }
    if (glfwWindowShouldClose(window.handle)) return false;

    ImGui_ImplOpenGL3_NewFrame();
    // Without an event, size, scale, cursor and focus have not changed, so the frame need not query the window system.
    if (!pacer.hasNoEvents()) {
        window.followScale();
        window.showPointer();
        ImGui_ImplGlfw_NewFrame();
    }
    ImGui::GetIO().DeltaTime = pacer.frameStarted(glfwGetTime());
    uiThemeNewFrame();
    // Dear ImGui spreads queued input over several frames. These frames must follow without an idle wait.
    if (window.context->InputEventsQueue.Size > 0) pacer.noteEvent();
    deltaSeconds = ImGui::GetIO().DeltaTime;
    return true;
}

bool UiHost::presentFrame(const float* clearColour) {
    Window& window = *window_;
    if (ImGui::GetTime() < window.footLineUntil) uiThemeFootLine(window.footLine);
    window.pacer.setTimersRun(ImGui::GetIO().WantTextInput || ImGui::IsAnyMouseDown() || uiThemeTooltipWaits());
    ImGui::Render();
    ++window.integration.framesBuilt;
    ImDrawData& frame = *ImGui::GetDrawData();
    const std::span<const float, 4> clear(clearColour, 4);
    if (!window.pacer.frameBuilt(frameFingerprint(frame, clear), texturesPending(frame))) return true;

    window.draw(frame, clear);
    window.lastImage.keep(frame, clear);
    ++window.integration.framesPresented;
    return true;
}

void UiHost::wake() {
    woken = true;
    glfwPostEmptyEvent();
}

void UiHost::requestAttention() {
    if (glfwGetWindowAttrib(window_->handle, GLFW_FOCUSED) == GLFW_FALSE) glfwRequestWindowAttention(window_->handle);
}

void UiHost::setProgress(float fraction) {
    const int percent = fraction < 0.0f ? -1 : static_cast<int>(std::lround(100.0f * std::min(fraction, 1.0f)));
    if (percent == window_->progressPercent) return;
    window_->progressPercent = percent;
    showTaskbarProgress(window_->handle, percent);
}

void UiHost::say(const std::string& text) {
    if (text.empty()) return;
    window_->footLine = text;
    window_->footLineUntil = ImGui::GetTime() + kFootLineSeconds;
}

void UiHost::repaintBehindDialog(std::int64_t dialog) {
    Window& window = *window_;
    window.behindDialog = true;
    glfwPollEvents();
    window.behindDialog = false;
    ImGuiIO& io = ImGui::GetIO();
    io.ClearEventsQueue();
    io.ClearInputKeys(); // the dialog may have received the release of a key
    io.ClearInputMouse();
    Window::notePointer(window.handle); // ClearInputMouse also clears the position
    if (window.dialogInFront != dialog && keepInFront(dialog, window.handle)) window.dialogInFront = dialog;
    window.repaintDamage();
}
