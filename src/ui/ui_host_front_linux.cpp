// Dialog programs can be told whose they are, but not all of them heed it: zenity's file chooser does not. So it is
// written into their windows for them.

#include "ui/ui_host_front_linux.h"

#include <vector>

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>

// As glfw3native.h declares them; a GLFW for Wayland alone lacks them.
extern "C" __attribute__((weak)) Display* glfwGetX11Display();
extern "C" __attribute__((weak)) Window glfwGetX11Window(GLFWwindow* window);

namespace {

// The numbers in a property of a window; empty when it has none.
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

// Those that the window manager knows of; without one, those on the desktop.
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

} // namespace

bool bringToFront(long process, GLFWwindow* owner) {
    Display* display = glfwGetX11Display && glfwGetX11Window ? glfwGetX11Display() : nullptr;
    if (display == nullptr) return false;
    bool found = false;
    // A window can go while it is looked at, and Xlib would end the program for that.
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
