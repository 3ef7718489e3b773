// Opens, paints and closes the window, and handles its events.

#include "ui/ui_host_window.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <utility>
#include <vector>

#include <GLFW/glfw3.h>
#include <imgui_impl_glfw.h>
#include <imgui_impl_opengl3.h>
#include <imgui_internal.h>

#include "ui/ui_host_platform.h"
#include "ui/ui_icon.h"
#include "ui/ui_theme.h"

namespace {

constexpr const char* kWindowClass = "volo-launcher"; // StartupWMClass of the desktop entry

// The OpenGL versions to try, in this order. The launcher works the same with each of them.
struct GraphicsVersion {
    int major, minor;
    bool core;
    const char* shaderVersion;
};
constexpr GraphicsVersion kGraphicsVersions[] = {
    {3, 3, true, "#version 330 core"}, {3, 2, true, "#version 150"}, {3, 0, false, "#version 130"}};

std::string takeError() {
    const char* description = nullptr;
    return glfwGetError(&description) == GLFW_NO_ERROR || !description ? "no reason given" : description;
}

bool onWayland() {
#if defined(GLFW_PLATFORM_WAYLAND)
    return glfwGetPlatform() == GLFW_PLATFORM_WAYLAND;
#else
    return std::strstr(glfwGetVersionString(), "Wayland") != nullptr;
#endif
}

// Returns a little less than the frame time of the fastest display, so that vertical sync determines the frame rate. If
// the refresh rate is unknown, as on a virtual display, returns 1/60 s.
double secondsPerFrame() {
    int fastest = 0;
    int count = 0;
    GLFWmonitor** monitors = glfwGetMonitors(&count);
    for (int i = 0; i < count; ++i)
        if (const GLFWvidmode* mode = glfwGetVideoMode(monitors[i])) fastest = std::max(fastest, mode->refreshRate);
    return fastest >= 30 ? 0.9 / fastest : 1.0 / 60.0;
}

// Removes the first rectangle of a frame if clearing the window has the same effect: it covers the whole window in the
// colour of the clear. A software rasteriser needs 11 ms of processor time for it.
void dropBackdrop(ImDrawData& frame, std::span<const float, 4> clear) {
    constexpr unsigned kIndices = 6;
    if (frame.CmdLists.empty() || frame.CmdLists[0]->CmdBuffer.empty()) return;
    ImDrawList& list = *frame.CmdLists[0];
    ImDrawCmd& first = list.CmdBuffer[0];
    if (first.IdxOffset != 0 || first.VtxOffset != 0 || first.UserCallback || first.ElemCount < kIndices) return;
    const ImVec2 max = frame.DisplayPos + frame.DisplaySize;
    const ImU32 colour = ImGui::ColorConvertFloat4ToU32({clear[0], clear[1], clear[2], 1.0f});
    const ImDrawVert* corners = list.VtxBuffer.Data; // Dear ImGui draws a rectangle from four corners, clockwise
    constexpr ImDrawIdx kOrder[kIndices] = {0, 1, 2, 0, 2, 3};
    if (!std::equal(kOrder, kOrder + kIndices, list.IdxBuffer.Data) || corners[0].pos != frame.DisplayPos ||
        corners[2].pos != max)
        return;
    if (!std::all_of(corners, corners + 4, [colour](const ImDrawVert& corner) { return corner.col == colour; })) return;
    first.IdxOffset += kIndices;
    first.ElemCount -= kIndices;
}

} // namespace

// --- opening and closing ---------------------------------------------------------------------------------------------

bool UiHost::Window::open(std::string& errorText) {
    glfwSetErrorCallback(nullptr); // errors are read with takeError instead
    glfwStarted = startWindowSystem();
    if (!glfwStarted) {
        errorText = "could not open the window: " + takeError();
        return false;
    }
    if (!createWindow(errorText) || !createContext(errorText)) return false;
    show();
    return true;
}

bool UiHost::Window::createWindow(std::string& errorText) {
    glfwWindowHint(GLFW_VISIBLE, GLFW_FALSE); // show() makes it visible, after it has been placed
    glfwWindowHint(GLFW_RESIZABLE, desc.resizable ? GLFW_TRUE : GLFW_FALSE);
    glfwWindowHint(GLFW_SCALE_TO_MONITOR, GLFW_TRUE);
    glfwWindowHint(GLFW_DEPTH_BITS, 0);
    glfwWindowHint(GLFW_STENCIL_BITS, 0);
    glfwWindowHint(GLFW_ALPHA_BITS, 0); // with EGL, alpha bits would select a translucent visual
    glfwWindowHintString(GLFW_X11_CLASS_NAME, kWindowClass);
    glfwWindowHintString(GLFW_X11_INSTANCE_NAME, kWindowClass);
#if defined(GLFW_WAYLAND_APP_ID)
    glfwWindowHintString(GLFW_WAYLAND_APP_ID, VOLO_APPLICATION_ID); // must equal the name of the desktop entry
#endif
    std::string reason;
    if (!createHandle(fastContextApi(), reason) && !createHandle(GLFW_NATIVE_CONTEXT_API, reason)) {
        errorText = "could not open the window: " + reason;
        return false;
    }
    darkenTitleBar(handle);
    setIcon();
    glfwMakeContextCurrent(handle);
    // With a swap interval other than 0, some Wayland compositors block glfwSwapBuffers while the window is hidden. On
    // Wayland the pacer's clock limits the frame rate instead.
    glfwSwapInterval(onWayland() ? 0 : 1);
    pacer = FramePacer(secondsPerFrame());
    place();
    return true;
}

// Creates the window with the first OpenGL version that works. On failure sets `reason` to the error of the preferred
// version, which is the first.
bool UiHost::Window::createHandle(int contextApi, std::string& reason) {
    reason.clear();
    glfwWindowHint(GLFW_CONTEXT_CREATION_API, contextApi);
    for (const GraphicsVersion& version : kGraphicsVersions) {
        glfwWindowHint(GLFW_CONTEXT_VERSION_MAJOR, version.major);
        glfwWindowHint(GLFW_CONTEXT_VERSION_MINOR, version.minor);
        glfwWindowHint(GLFW_OPENGL_PROFILE, version.core ? GLFW_OPENGL_CORE_PROFILE : GLFW_OPENGL_ANY_PROFILE);
        glfwWindowHint(GLFW_OPENGL_FORWARD_COMPAT, version.core ? GLFW_TRUE : GLFW_FALSE);
        handle = glfwCreateWindow(desc.width, desc.height, desc.title, nullptr, nullptr);
        if (handle) {
            shaderVersion = version.shaderVersion;
            return true;
        }
        if (reason.empty()) reason = takeError();
    }
    return false;
}

void UiHost::Window::setIcon() {
    if (onWayland()) return; // Wayland uses the icon of the desktop entry
    std::vector<GLFWimage> images;
    for (const UiIconPicture& picture : uiIconPictures())
        images.push_back({picture.size, picture.size, const_cast<unsigned char*>(picture.pixels)}); // GLFW only reads
    if (!images.empty()) glfwSetWindowIcon(handle, static_cast<int>(images.size()), images.data());
}

bool UiHost::Window::createContext(std::string& errorText) {
    IMGUI_CHECKVERSION();
    context = ImGui::CreateContext();
    ImGuiIO& io = ImGui::GetIO();
    io.IniFilename = nullptr;
    io.LogFilename = nullptr;
    io.ConfigFlags |= ImGuiConfigFlags_NavEnableKeyboard;
    io.ConfigDebugHighlightIdConflicts = false; // some buttons have equal labels and therefore equal identifiers
    io.ConfigErrorRecoveryEnableTooltip = false;
    context->ConfigNavWindowingKeyNext = context->ConfigNavWindowingKeyPrev = ImGuiKey_None; // there is only one window

    watchEvents(); // call it before the backend: the backend's callbacks then call ours
    platformReady = ImGui_ImplGlfw_InitForOpenGL(handle, true);
    rendererReady = platformReady && ImGui_ImplOpenGL3_Init(shaderVersion);
    if (!rendererReady) errorText = "could not start the graphics device: OpenGL 3 is missing";
    return rendererReady;
}

UiHost::Window::~Window() {
    if (context) {
        lastImage.forget();
        uiThemeShutdown();
        if (rendererReady) ImGui_ImplOpenGL3_Shutdown();
        if (platformReady) ImGui_ImplGlfw_Shutdown();
        ImGui::DestroyContext(context);
    }
    if (handle) glfwDestroyWindow(handle);
    if (glfwStarted) glfwTerminate();
}

// --- painting --------------------------------------------------------------------------------------------------------

// Makes the window visible and clears it. Without the clear it would show old graphics memory until the first frame.
void UiHost::Window::show() {
    float background[4];
    uiThemeBackgroundFloat(background);
    glfwShowWindow(handle);
    glClearColor(background[0], background[1], background[2], background[3]);
    glClear(GL_COLOR_BUFFER_BIT);
    glfwSwapBuffers(handle);
}

void UiHost::Window::draw(ImDrawData& frame, std::span<const float, 4> clear) const {
    int width = 0;
    int height = 0;
    glfwGetFramebufferSize(handle, &width, &height);
    glViewport(0, 0, width, height);
    glClearColor(clear[0], clear[1], clear[2], clear[3]);
    glClear(GL_COLOR_BUFFER_BIT);
    dropBackdrop(frame, clear);
    ImGui_ImplOpenGL3_RenderDrawData(&frame);
    glfwSwapBuffers(handle);
}

bool UiHost::Window::isUntouched() const {
    return glfwWindowShouldClose(handle) == GLFW_FALSE && pacer.hasNoEvents() && !pacer.timersRun() &&
           ImGui::GetTime() >= footLineUntil;
}

// Repaints the last image after damage. If the window was resized, the image keeps its old size and is in the top left
// corner.
void UiHost::Window::repaintDamage() {
    if (!pacer.takeDamage()) return;
    int width = 0;
    int height = 0;
    glfwGetWindowSize(handle, &width, &height);
    lastImage.frame.DisplaySize = {static_cast<float>(width), static_cast<float>(height)};
    draw(lastImage.frame, lastImage.clear);
}

// Shows the pointer that Dear ImGui asks for, if its backend should not do so. Call it before the backend's frame.
void UiHost::Window::showPointer() {
    GLFWcursor* pointer = contentScale() <= 1.0f ? stillPointer(ImGui::GetMouseCursor()) : nullptr;
    int& flags = ImGui::GetIO().ConfigFlags;
    flags = pointer ? flags | ImGuiConfigFlags_NoMouseCursorChange : flags & ~ImGuiConfigFlags_NoMouseCursorChange;
    if (pointer != std::exchange(shownPointer, pointer) && pointer) glfwSetCursor(handle, pointer);
}

void LastImage::keep(const ImDrawData& shown, std::span<const float, 4> clearColour) {
    forget();
    frame = shown;
    frame.Textures = nullptr; // the renderer has already processed them
    for (ImDrawList*& list : frame.CmdLists)
        list = list->CloneOutput();
    std::ranges::copy(clearColour, clear.begin());
}

void LastImage::forget() {
    for (ImDrawList* list : frame.CmdLists)
        IM_DELETE(list);
    frame.Clear();
}

// --- events ----------------------------------------------------------------------------------------------------------

UiHost::Window& UiHost::Window::of(GLFWwindow* source) {
    return *static_cast<Window*>(glfwGetWindowUserPointer(source));
}

void UiHost::Window::noteEvent(GLFWwindow* source) {
    of(source).pacer.noteEvent();
}

// Passes the pointer's position to Dear ImGui with each click. The GLFW backend of Dear ImGui 1.92 clears the position
// when the window loses the focus and sets it only when the pointer moves. A click without a move would hit nothing.
void UiHost::Window::notePointer(GLFWwindow* source) {
    double x = 0.0;
    double y = 0.0;
    glfwGetCursorPos(source, &x, &y);
    ImGui::GetIO().AddMousePosEvent(static_cast<float>(x), static_cast<float>(y));
    noteEvent(source);
}

// Records damage. If a frame is being built, repaints the last image at once. Damage arrives during a frame only on
// Windows: the file dialog blocks the frame, and the dialog's own event loop calls this function.
void UiHost::Window::noteDamage(GLFWwindow* source) {
    Window& window = of(source);
    window.pacer.noteDamage();
    if (window.context->WithinFrameScope && !window.behindDialog) window.repaintDamage();
}

void UiHost::Window::notePlacement(GLFWwindow* source) {
    of(source).placementChangedAt = glfwGetTime();
    noteEvent(source);
}

// Zooms with Ctrl and +, - or 0. Compares the keys' characters, because the position of "+" depends on the keyboard
// layout.
void UiHost::Window::noteKey(GLFWwindow* source, int key, int scanCode, int action, int modifiers) {
    noteEvent(source);
    if (action == GLFW_RELEASE || (modifiers & GLFW_MOD_CONTROL) == 0 || (modifiers & GLFW_MOD_ALT) != 0) return;
    const char* name = glfwGetKeyName(key, scanCode);
    const std::string_view character = name ? name : "";
    if (character == "+" || character == "=") of(source).zoomBy(1);
    if (character == "-") of(source).zoomBy(-1);
    if (character == "0") of(source).zoomBy(0);
}

void UiHost::Window::watchEvents() {
    glfwSetWindowUserPointer(handle, this);
    glfwSetKeyCallback(handle, noteKey);
    glfwSetCharCallback(handle, [](GLFWwindow* source, unsigned int) { noteEvent(source); });
    glfwSetMouseButtonCallback(handle, [](GLFWwindow* source, int, int, int) { notePointer(source); });
    glfwSetCursorPosCallback(handle, [](GLFWwindow* source, double, double) { noteEvent(source); });
    glfwSetCursorEnterCallback(handle, [](GLFWwindow* source, int) { noteEvent(source); });
    glfwSetScrollCallback(handle, [](GLFWwindow* source, double, double) { noteEvent(source); });
    glfwSetWindowFocusCallback(handle, [](GLFWwindow* source, int focused) {
        const bool pointed = focused == GLFW_TRUE && glfwGetWindowAttrib(source, GLFW_HOVERED) == GLFW_TRUE;
        pointed ? notePointer(source) : noteEvent(source);
    });
    glfwSetWindowContentScaleCallback(handle, [](GLFWwindow* source, float, float) { noteEvent(source); });
    glfwSetWindowPosCallback(handle, [](GLFWwindow* source, int, int) { notePlacement(source); });
    glfwSetWindowSizeCallback(handle, [](GLFWwindow* source, int, int) { notePlacement(source); });
    glfwSetWindowIconifyCallback(
        handle, [](GLFWwindow* source, int iconified) { of(source).pacer.setIconified(iconified == GLFW_TRUE); });
    glfwSetWindowMaximizeCallback(handle, [](GLFWwindow* source, int) { notePlacement(source); });
    glfwSetFramebufferSizeCallback(handle, [](GLFWwindow* source, int, int) { noteDamage(source); });
    glfwSetWindowRefreshCallback(handle, noteDamage);
}
