#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include <GLFW/glfw3.h>
#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <systemd/sd-bus.h>
#if defined(GLFW_PLATFORM)
#include <dlfcn.h>
#include <wayland-client.h>
#endif

#include "ui/ui_host_platform.h"

// Declares two functions of glfw3native.h as weak symbols, because a GLFW that is built only for Wayland does not have
// them.
extern "C" __attribute__((weak)) Display* glfwGetX11Display();
extern "C" __attribute__((weak)) Window glfwGetX11Window(GLFWwindow* window);

namespace {

constexpr const char* kDesktopEntry = "application://" VOLO_APPLICATION_ID ".desktop";

// Returns the numbers in a property of a window. Empty if the window does not have the property.
std::vector<unsigned long> numbersIn(Display* display, Window window, const char* property, Atom type) {
    constexpr long kMost = 1024;
    Atom actual = None;
    int bits = 0;
    unsigned long count = 0;
    unsigned long left = 0;
    unsigned char* data = nullptr;
    const int outcome = XGetWindowProperty(display, window, XInternAtom(display, property, False), 0, kMost, False,
                                           type, &actual, &bits, &count, &left, &data);
    std::vector<unsigned long> numbers;
    if (outcome == Success && data != nullptr && bits == 32)
        numbers.assign(reinterpret_cast<unsigned long*>(data), reinterpret_cast<unsigned long*>(data) + count);
    if (data != nullptr) XFree(data);
    return numbers;
}

// Returns the windows in the window manager's list. Without a window manager, returns the children of the root window.
std::vector<Window> allWindows(Display* display) {
    const Window root = DefaultRootWindow(display);
    std::vector<Window> windows = numbersIn(display, root, "_NET_CLIENT_LIST", XA_WINDOW);
    if (!windows.empty()) return windows;
    Window ignored = None;
    Window* children = nullptr;
    unsigned count = 0;
    if (XQueryTree(display, root, &ignored, &ignored, &children, &count) != 0 && children != nullptr) {
        windows.assign(children, children + count);
        XFree(children);
    }
    return windows;
}

#if defined(GLFW_PLATFORM)
// What a Wayland compositor offers.
struct Compositor {
    bool isRunning = false;
    bool hasSeat = false;          // keyboard and pointer
    bool decoratesWindows = false; // draws title bars itself
};

Compositor findCompositor() {
    Compositor found;
    const std::unique_ptr<wl_display, decltype(&wl_display_disconnect)> display(wl_display_connect(nullptr),
                                                                                &wl_display_disconnect);
    if (!display) return found;
    static constexpr wl_registry_listener kListener = {
        [](void* data, wl_registry*, std::uint32_t, const char* interface, std::uint32_t) {
            auto* compositor = static_cast<Compositor*>(data);
            compositor->hasSeat |= interface == std::string_view("wl_seat");
            compositor->decoratesWindows |= interface == std::string_view("zxdg_decoration_manager_v1");
        },
        [](void*, wl_registry*, std::uint32_t) {}};
    const std::unique_ptr<wl_registry, decltype(&wl_registry_destroy)> registry(wl_display_get_registry(display.get()),
                                                                                &wl_registry_destroy);
    wl_registry_add_listener(registry.get(), &kListener, &found);
    found.isRunning = wl_display_roundtrip(display.get()) >= 0;
    return found;
}

// True if libdecor, which GLFW loads, has a plugin. Without one it draws no title bar.
bool libdecorHasPlugin() {
    namespace fs = std::filesystem;
    void* library = dlopen("libdecor-0.so.0", RTLD_LAZY);
    void* symbol = library != nullptr ? dlsym(library, "libdecor_new") : nullptr;
    Dl_info place{};
    const bool found = symbol != nullptr && dladdr(symbol, &place) != 0;
    const fs::path own = found ? fs::path(place.dli_fname).parent_path() / "libdecor/plugins-1" : fs::path();
    if (library != nullptr) dlclose(library);
    if (!found) return false;
    const char* chosen = std::getenv("LIBDECOR_PLUGIN_DIR");
    std::error_code error;
    const fs::directory_iterator plugins(chosen != nullptr ? fs::path(chosen) : own, error);
    return !error && std::any_of(begin(plugins), end(plugins),
                                 [](const fs::directory_entry& entry) { return entry.path().extension() == ".so"; });
}

bool hasXServer() {
    Display* display = XOpenDisplay(nullptr);
    if (display == nullptr) return false;
    XCloseDisplay(display);
    return true;
}
#endif

} // namespace

// Without a title bar the window can be neither moved nor closed with the mouse. Under a compositor without a seat,
// such as Weston with its headless backend, glfwInit of GLFW 3.4 crashes on Wayland; on X11 it fails with a message.
void chooseWindowSystem() {
#if defined(GLFW_PLATFORM)
    const Compositor compositor = findCompositor();
    if (!compositor.isRunning) return; // GLFW then chooses X11
    const bool hasTitleBar = compositor.decoratesWindows || libdecorHasPlugin();
    if (!compositor.hasSeat || (!hasTitleBar && hasXServer())) glfwInitHint(GLFW_PLATFORM, GLFW_PLATFORM_X11);
#endif
}

int fastContextApi() {
    return GLFW_EGL_CONTEXT_API;
}

void darkenTitleBar(GLFWwindow* /*window*/) {} // window managers of X11 and Wayland choose the colours

// Emits the D-Bus signal Update of com.canonical.Unity.LauncherEntry, which the docks of several desktops support. Does
// not wait for a reply. Does nothing without a session bus.
void showTaskbarProgress(GLFWwindow* /*window*/, int percent) {
    static sd_bus* bus = nullptr; // never closed, because docks remove the progress of a closed connection
    static bool tried = false;
    if (!std::exchange(tried, true) && sd_bus_open_user(&bus) < 0) bus = nullptr;
    if (bus == nullptr) return;
    sd_bus_emit_signal(bus, "/com/canonical/unity/launcherentry/1", "com.canonical.Unity.LauncherEntry", "Update",
                       "sa{sv}", kDesktopEntry, 2, "progress", "d", std::max(percent, 0) / 100.0, "progress-visible",
                       "b", percent >= 0);
    sd_bus_flush(bus);
}

// Sets the hint WM_TRANSIENT_FOR on the windows of the dialog, because zenity 3.44 ignores its option for a parent
// window.
bool keepInFront(std::int64_t process, GLFWwindow* owner) {
    Display* display = glfwGetX11Display && glfwGetX11Window ? glfwGetX11Display() : nullptr;
    if (display == nullptr) return false;
    bool found = false;
    // Ignore X errors here: if a window is destroyed between two calls, Xlib's default handler ends the program.
    const XErrorHandler before = XSetErrorHandler([](Display*, XErrorEvent*) { return 0; });
    for (const Window window : allWindows(display)) {
        const std::vector<unsigned long> owners = numbersIn(display, window, "_NET_WM_PID", XA_CARDINAL);
        if (owners.empty() || owners.front() != static_cast<unsigned long>(process)) continue;
        XWindowAttributes attributes{};
        if (XGetWindowAttributes(display, window, &attributes) == 0 || attributes.map_state == IsUnmapped) continue;
        XSetTransientForHint(display, window, glfwGetX11Window(owner));
        found = true;
    }
    XSync(display, False);
    XSetErrorHandler(before);
    return found;
}
