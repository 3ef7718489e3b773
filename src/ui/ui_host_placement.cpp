// Size, scale and place of the window.

#include <algorithm>
#include <cmath>
#include <vector>

#include <GLFW/glfw3.h>

#include "ui/ui_host_window.h"

namespace {

// The primary monitor's area is the first.
std::vector<ScreenArea> screenAreas() {
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

int scaled(int units, float scale) {
    return static_cast<int>(std::lround(static_cast<float>(units) * scale));
}

} // namespace

float UiHost::Window::contentScale() const {
    float monitor = 1.0f;
    float ignored = 1.0f;
    glfwGetWindowContentScale(handle, &monitor, &ignored);
    // On Wayland and macOS screen coordinates are not pixels and already include the scale.
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
    for (const ScreenArea& area : screenAreas()) { // a minimum larger than a monitor would push the window off it
        minWidth = std::min(minWidth, area.width);
        minHeight = std::min(minHeight, area.height);
    }
    glfwSetWindowSizeLimits(handle, minWidth, minHeight, GLFW_DONT_CARE, GLFW_DONT_CARE);
}

void UiHost::Window::place() {
    followScale();
    const std::vector<ScreenArea> areas = screenAreas();
    constexpr int kNowhere = -100'000; // on no area, so fitPlacement centres the window on the first
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

void UiHost::Window::rememberPlacement() {
    if (placementFile.empty()) return;
    const bool maximized = glfwGetWindowAttrib(handle, GLFW_MAXIMIZED) == GLFW_TRUE;
    const bool iconified = glfwGetWindowAttrib(handle, GLFW_ICONIFIED) == GLFW_TRUE;
    WindowPlacement now = placement.value_or(WindowPlacement{0, 0, desc.width, desc.height, false});
    // A maximized or iconified window does not know the size it will be restored to, so the last known size stays.
    if (!maximized && !iconified) {
        glfwGetWindowPos(handle, &now.x, &now.y);
        glfwGetWindowSize(handle, &now.width, &now.height);
        now.width = scaled(now.width, 1.0f / scale);
        now.height = scaled(now.height, 1.0f / scale);
    }
    now.maximized = maximized;
    if (now == placement) return;
    static_cast<void>(writePlacement(placementFile, now)); // a failure costs only convenience
}
