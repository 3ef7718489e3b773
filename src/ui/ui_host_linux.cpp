#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <initializer_list>
#include <memory>
#include <span>
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
#include <X11/Xcursor/Xcursor.h>
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

// Makes a pointer of the theme's picture for the first name that the theme has. Null if it has none of them.
GLFWcursor* pointerFromTheme(std::initializer_list<const char*> names) {
    constexpr int kUsualSize = 16; // that of GLFW
    const char* chosen = std::getenv("XCURSOR_SIZE");
    const int size = chosen != nullptr && std::atoi(chosen) > 0 ? std::atoi(chosen) : kUsualSize;
    for (const char* name : names) {
        const std::unique_ptr<XcursorImage, decltype(&XcursorImageDestroy)> picture(
            XcursorLibraryLoadImage(name, std::getenv("XCURSOR_THEME"), size), &XcursorImageDestroy);
        if (!picture) continue;
        std::vector<unsigned char> pixels;
        for (const XcursorPixel pixel : std::span(picture->pixels, std::size_t{picture->width} * picture->height)) {
            const unsigned alpha = pixel >> 24; // Xcursor has multiplied the colours by it
            for (const unsigned shift : {16u, 8u, 0u})
                pixels.push_back(static_cast<unsigned char>(
                    alpha == 0 ? 0 : std::min(255u, ((pixel >> shift & 255u) * 255u + alpha / 2) / alpha)));
            pixels.push_back(static_cast<unsigned char>(alpha));
        }
        const GLFWimage image{static_cast<int>(picture->width), static_cast<int>(picture->height), pixels.data()};
        return glfwCreateCursor(&image, static_cast<int>(picture->xhot), static_cast<int>(picture->yhot));
    }
    return nullptr;
}

bool hasXServer() {
    Display* display = XOpenDisplay(nullptr);
    if (display == nullptr) return false;
    XCloseDisplay(display);
    return true;
}
#endif

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

// Lets Xlib keep the table of the compose keys in the user's cache folder. Otherwise Xlib parses it at every start,
// which takes 24 ms. Xlib does not use the cache for root. Programs that the launcher starts do not get the variable.
class ComposeKeyCache {
  public:
    ComposeKeyCache() {
        namespace fs = std::filesystem;
        const char* home = std::getenv("HOME");
        const char* caches = std::getenv("XDG_CACHE_HOME");
        fs::path folder;
        if (caches != nullptr && fs::path(caches).is_absolute()) {
            folder = caches;
        } else if (home != nullptr && *home != '\0') {
            folder = fs::path(home) / ".cache";
        }
        if (folder.empty() || std::getenv(kVariable) != nullptr) return;
        folder /= "volo-launcher/compose-keys";
        std::error_code error;
        fs::create_directories(folder, error);
        if (!error) isSet_ = setenv(kVariable, folder.c_str(), 0) == 0;
    }
    ~ComposeKeyCache() {
        if (isSet_) unsetenv(kVariable);
    }
    ComposeKeyCache(const ComposeKeyCache&) = delete;
    ComposeKeyCache& operator=(const ComposeKeyCache&) = delete;

  private:
    static constexpr const char* kVariable = "XCOMPOSECACHE";
    bool isSet_ = false;
};

} // namespace

bool startWindowSystem() {
    const ComposeKeyCache cache;
    chooseWindowSystem();
    return glfwInit() == GLFW_TRUE;
}

GLFWcursor* stillPointer(ImGuiMouseCursor cursor) {
#if defined(GLFW_PLATFORM)
    if (glfwGetPlatform() != GLFW_PLATFORM_WAYLAND) return nullptr;
    static GLFWcursor* const arrow = pointerFromTheme({"default", "left_ptr"});
    static GLFWcursor* const hand = pointerFromTheme({"pointer", "hand2"});
    static GLFWcursor* const text = pointerFromTheme({"text", "xterm"});
    switch (cursor) {
    case ImGuiMouseCursor_Arrow:
        return arrow;
    case ImGuiMouseCursor_Hand:
        return hand;
    case ImGuiMouseCursor_TextInput:
        return text;
    default:
        break;
    }
#endif
    static_cast<void>(cursor);
    return nullptr;
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
