#include "ui/ui_host.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <optional>
#include <span>
#include <vector>

#include <GLFW/glfw3.h>
#include <imgui.h>
#include <imgui_impl_glfw.h>
#include <imgui_impl_opengl3.h>
#include <imgui_internal.h>

#ifdef __linux__
#include "ui/ui_host_front_linux.h"
#elif defined(_WIN32)
#include "ui/ui_host_frame_windows.h"
#endif
#include "ui/ui_icon.h"
#include "ui/ui_pacing.h"
#include "ui/ui_placement.h"
#include "ui/ui_theme.h"

namespace {

constexpr const char* kWindowClass = "volo-launcher";
constexpr const char* kPlacementFile = "Launcher.window";

// The newest first. Every one is enough for what is drawn.
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

// Some Wayland compositors let a swap with an interval block for as long as the window is hidden. There the pacer's own
// clock is enough.
bool onWayland() {
#if defined(GLFW_PLATFORM_WAYLAND)
    return glfwGetPlatform() == GLFW_PLATFORM_WAYLAND;
#else
    return std::strstr(glfwGetVersionString(), "Wayland") != nullptr;
#endif
}

std::vector<ScreenArea> screenAreas() { // the primary monitor's first
    std::vector<ScreenArea> areas;
    int count = 0;
    GLFWmonitor** monitors = glfwGetMonitors(&count);
    for (int i = 0; i < count; ++i) {
        ScreenArea area;
        glfwGetMonitorWorkarea(monitors[i], &area.x, &area.y, &area.width, &area.height);
        if (area.width > 0 && area.height > 0) areas.push_back(area);
    }
    return areas;
}

// A little less than the fastest display takes for a frame, so that waiting for the display is what sets the pace; the
// rate itself where none is known, as without a real display.
double secondsPerFrame() {
    int fastest = 0;
    int count = 0;
    GLFWmonitor** monitors = glfwGetMonitors(&count);
    for (int i = 0; i < count; ++i)
        if (const GLFWvidmode* mode = glfwGetVideoMode(monitors[i])) fastest = std::max(fastest, mode->refreshRate);
    return fastest >= 30 ? 0.9 / fastest : 1.0 / 60.0;
}

int scaled(int units, float scale) {
    return static_cast<int>(std::lround(static_cast<float>(units) * scale));
}

// Dear ImGui reuses what it drew as soon as the next frame begins; this keeps it.
struct LastImage {
    void keep(const ImDrawData& shown, std::span<const float, 4> clearColour) {
        forget();
        frame = shown;
        frame.Textures = nullptr; // they have been taken
        for (ImDrawList*& list : frame.CmdLists)
            list = list->CloneOutput();
        std::ranges::copy(clearColour, clear.begin());
    }
    void forget() {
        for (ImDrawList* list : frame.CmdLists)
            IM_DELETE(list);
        frame.Clear();
    }
    ImDrawData frame;
    std::array<float, 4> clear{};
};

} // namespace

struct UiHost::Window {
    UiIntegration integration;
    UiHostDesc desc;
    std::filesystem::path placementFile; // empty: nothing is remembered
    std::optional<WindowPlacement> placement;

    bool glfwStarted = false;
    GLFWwindow* handle = nullptr;
    ImGuiContext* context = nullptr;
    bool platformReady = false;
    bool rendererReady = false;
    const char* shaderVersion = nullptr;

    FramePacer pacer;
    LastImage lastImage;
    bool serving = false;
    std::int64_t dialogInFront = 0; // the process of the dialog that was served last
    float scale = 0.0f;             // pixels of the screen's coordinates per unit, as of this frame

    ~Window();
    [[nodiscard]] bool open(std::string& errorText);
    [[nodiscard]] bool createWindow(std::string& errorText);
    void setIcon();
    [[nodiscard]] bool createContext(std::string& errorText);
    void watchEvents();
    static Window& of(GLFWwindow* source) { return *static_cast<Window*>(glfwGetWindowUserPointer(source)); }
    static void noteEvent(GLFWwindow* source) { of(source).pacer.noteEvent(); }
    static void notePointer(GLFWwindow* source);
    static void noteDamage(GLFWwindow* source);
    void place();
    void rememberPlacement();
    void followScale();
    [[nodiscard]] float contentScale() const;
    void show();
    void draw(ImDrawData& frame, std::span<const float, 4> clear) const;
    void showLastImage();
};

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
        glfwWaitEventsTimeout(FramePacer::kIdleWaitSeconds);
    } else {
        double wait = pacer.secondsUntilDue(glfwGetTime());
        for (; wait > 0.0; wait = pacer.secondsUntilDue(glfwGetTime()))
            glfwWaitEventsTimeout(wait);
        glfwPollEvents();
    }
    if (glfwWindowShouldClose(window.handle)) return false;

    pacer.setIconified(glfwGetWindowAttrib(window.handle, GLFW_ICONIFIED) == GLFW_TRUE);
    pacer.frameStarted(glfwGetTime());
    window.followScale();
    ImGui_ImplOpenGL3_NewFrame();
    ImGui_ImplGlfw_NewFrame();
    ImGui::NewFrame();
    // A burst of input is spread over frames, a click and its release over two; they must not come at the idle pace.
    if (window.context->InputEventsQueue.Size > 0) pacer.noteEvent();
    deltaSeconds = ImGui::GetIO().DeltaTime;
    return true;
}

bool UiHost::presentFrame(const float* clearColour) {
    Window& window = *window_;
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

void UiHost::serve([[maybe_unused]] std::int64_t dialog) {
    Window& window = *window_;
    window.serving = true;
    glfwPollEvents();
    window.serving = false;
    ImGuiIO& io = ImGui::GetIO();
    io.ClearEventsQueue();
    io.ClearInputKeys(); // a key may be let go of unheard
    io.ClearInputMouse();
    Window::notePointer(window.handle); // or a click without a move would hit nothing afterwards
#ifdef __linux__
    if (window.dialogInFront != dialog && bringToFront(dialog, window.handle)) window.dialogInFront = dialog;
#endif
    window.showLastImage();
}

// --- opening and closing ---------------------------------------------------------------------------------------------

bool UiHost::Window::open(std::string& errorText) {
    glfwSetErrorCallback(nullptr); // reasons are fetched, nothing is printed
    glfwStarted = glfwInit() == GLFW_TRUE;
    if (!glfwStarted) {
        errorText = "could not open the window: " + takeError();
        return false;
    }
    if (!createWindow(errorText) || !createContext(errorText)) return false;
    show();
    return true;
}

bool UiHost::Window::createWindow(std::string& errorText) {
    glfwWindowHint(GLFW_VISIBLE, GLFW_FALSE); // until it stands where it belongs and has something to show
    glfwWindowHint(GLFW_RESIZABLE, desc.resizable ? GLFW_TRUE : GLFW_FALSE);
    glfwWindowHint(GLFW_SCALE_TO_MONITOR, GLFW_TRUE);
    glfwWindowHint(GLFW_DEPTH_BITS, 0);
    glfwWindowHint(GLFW_STENCIL_BITS, 0);
    glfwWindowHintString(GLFW_X11_CLASS_NAME, kWindowClass);
    glfwWindowHintString(GLFW_X11_INSTANCE_NAME, kWindowClass);
#if defined(GLFW_WAYLAND_APP_ID)
    glfwWindowHintString(GLFW_WAYLAND_APP_ID, kWindowClass);
#endif
    std::string reason;
    for (const GraphicsVersion& version : kGraphicsVersions) {
        glfwWindowHint(GLFW_CONTEXT_VERSION_MAJOR, version.major);
        glfwWindowHint(GLFW_CONTEXT_VERSION_MINOR, version.minor);
        glfwWindowHint(GLFW_OPENGL_PROFILE, version.core ? GLFW_OPENGL_CORE_PROFILE : GLFW_OPENGL_ANY_PROFILE);
        glfwWindowHint(GLFW_OPENGL_FORWARD_COMPAT, version.core ? GLFW_TRUE : GLFW_FALSE);
        handle = glfwCreateWindow(desc.width, desc.height, desc.title, nullptr, nullptr);
        if (handle) {
            shaderVersion = version.shaderVersion;
            break;
        }
        if (reason.empty()) reason = takeError(); // of the version that was wanted
    }
    if (!handle) {
        errorText = "could not open the window: " + reason;
        return false;
    }
#ifdef _WIN32
    darkenFrame(handle);
#endif
    setIcon();
    glfwMakeContextCurrent(handle);
    glfwSwapInterval(onWayland() ? 0 : 1);
    pacer = FramePacer(secondsPerFrame());
    place();
    return true;
}

// Wayland takes it from the desktop entry.
void UiHost::Window::setIcon() {
    if (onWayland()) return;
    std::vector<GLFWimage> images;
    for (const UiIconPicture& picture : uiIconPictures())
        images.push_back({picture.size, picture.size, const_cast<unsigned char*>(picture.pixels)}); // only read
    if (!images.empty()) glfwSetWindowIcon(handle, static_cast<int>(images.size()), images.data());
}

bool UiHost::Window::createContext(std::string& errorText) {
    IMGUI_CHECKVERSION();
    context = ImGui::CreateContext();
    ImGuiIO& io = ImGui::GetIO();
    io.IniFilename = nullptr;
    io.LogFilename = nullptr;
    io.ConfigFlags |= ImGuiConfigFlags_NavEnableKeyboard;
    io.ConfigDebugHighlightIdConflicts = false; // equal labels are meant to be one item
    io.ConfigErrorRecoveryEnableTooltip = false;
    context->ConfigNavWindowingKeyNext = context->ConfigNavWindowingKeyPrev = ImGuiKey_None; // there is one window

    watchEvents(); // before the backend, whose callbacks go on to these
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

// A dark window at once, not whatever the memory held until the first frame is ready.
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
    ImGui_ImplOpenGL3_RenderDrawData(&frame);
    glfwSwapBuffers(handle);
}

// Where it was lost. The image keeps its corner when the window has been resized.
void UiHost::Window::showLastImage() {
    if (!pacer.takeDamage()) return;
    int width = 0;
    int height = 0;
    glfwGetWindowSize(handle, &width, &height);
    lastImage.frame.DisplaySize = {static_cast<float>(width), static_cast<float>(height)};
    draw(lastImage.frame, lastImage.clear);
}

// --- events ----------------------------------------------------------------------------------------------------------

// A window that loses the keyboard forgets where the pointer is, and hears of it again only when it moves: a click
// before that would hit nothing.
void UiHost::Window::notePointer(GLFWwindow* source) {
    double x = 0.0;
    double y = 0.0;
    glfwGetCursorPos(source, &x, &y);
    ImGui::GetIO().AddMousePosEvent(static_cast<float>(x), static_cast<float>(y));
    noteEvent(source);
}

// In the middle of a frame it is Windows that asks, while it shows a dialog of its own and nobody calls serve.
void UiHost::Window::noteDamage(GLFWwindow* source) {
    Window& window = of(source);
    window.pacer.noteDamage();
    if (window.context->WithinFrameScope && !window.serving) window.showLastImage();
}

void UiHost::Window::watchEvents() {
    glfwSetWindowUserPointer(handle, this);
    glfwSetKeyCallback(handle, [](GLFWwindow* source, int, int, int, int) { noteEvent(source); });
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
    glfwSetFramebufferSizeCallback(handle, [](GLFWwindow* source, int, int) { noteDamage(source); });
    glfwSetWindowRefreshCallback(handle, noteDamage);
}

// --- size and place --------------------------------------------------------------------------------------------------

float UiHost::Window::contentScale() const {
    float monitor = 1.0f;
    float ignored = 1.0f;
    glfwGetWindowContentScale(handle, &monitor, &ignored);
    // Where the screen's coordinates are not pixels they follow the scale already.
    int width = 0;
    int framebufferWidth = 0;
    int unused = 0;
    glfwGetWindowSize(handle, &width, &unused);
    glfwGetFramebufferSize(handle, &framebufferWidth, &unused);
    if (width > 0 && framebufferWidth > 0) monitor *= static_cast<float>(width) / static_cast<float>(framebufferWidth);
    return monitor > 0.0f ? monitor : 1.0f;
}

void UiHost::Window::followScale() {
    const float now = contentScale();
    if (now == scale) return;
    scale = now;
    int minWidth = scaled(desc.minWidth, scale);
    int minHeight = scaled(desc.minHeight, scale);
    for (const ScreenArea& area : screenAreas()) { // a limit that no monitor has room for would push the window off it
        minWidth = std::min(minWidth, area.width);
        minHeight = std::min(minHeight, area.height);
    }
    glfwSetWindowSizeLimits(handle, minWidth, minHeight, GLFW_DONT_CARE, GLFW_DONT_CARE);
}

void UiHost::Window::place() {
    followScale();
    const std::vector<ScreenArea> areas = screenAreas();
    constexpr int kNowhere = -100'000; // on no area: the window comes up in the middle of the first
    WindowPlacement wanted{kNowhere, kNowhere, desc.width, desc.height, false};
    if (!placementFile.empty() && (placement = readPlacement(placementFile))) wanted = *placement;
    wanted.width = scaled(wanted.width, scale);
    wanted.height = scaled(wanted.height, scale);
    const WindowPlacement fitted =
        fitPlacement(wanted, areas, {0, 0, scaled(desc.minWidth, scale), scaled(desc.minHeight, scale)});
    glfwSetWindowSize(handle, fitted.width, fitted.height);
    if (!areas.empty()) glfwSetWindowPos(handle, fitted.x, fitted.y);
    if (fitted.maximized) glfwMaximizeWindow(handle);
}

// A maximized or iconified window says nothing of the size that it goes back to: what was known of it stays.
void UiHost::Window::rememberPlacement() {
    if (placementFile.empty()) return;
    const bool maximized = glfwGetWindowAttrib(handle, GLFW_MAXIMIZED) == GLFW_TRUE;
    const bool iconified = glfwGetWindowAttrib(handle, GLFW_ICONIFIED) == GLFW_TRUE;
    WindowPlacement now = placement.value_or(WindowPlacement{0, 0, desc.width, desc.height, false});
    if (!maximized && !iconified) {
        glfwGetWindowPos(handle, &now.x, &now.y);
        glfwGetWindowSize(handle, &now.width, &now.height);
        now.width = scaled(now.width, 1.0f / scale);
        now.height = scaled(now.height, 1.0f / scale);
    }
    now.maximized = maximized;
    if (now == placement) return;
    static_cast<void>(writePlacement(placementFile, now)); // only a convenience is lost
}
