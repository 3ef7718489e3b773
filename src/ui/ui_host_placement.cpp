// Computes, applies and saves the window's size, scale, zoom and position.

#include <algorithm>
#include <cmath>

#include <GLFW/glfw3.h>

#include "ui/ui_host_window.h"

namespace {

constexpr double kSettleSeconds = 0.5;

int scaled(int units, float scale) {
    return static_cast<int>(std::lround(static_cast<float>(units) * scale));
}

} // namespace

float UiHost::Window::contentScale() const {
    float monitor = 1.0f;
    float ignored = 1.0f;
    glfwGetWindowContentScale(handle, &monitor, &ignored);
    // On Wayland and macOS, the window's size in screen coordinates is already divided by the monitor's scale. So
    // divide the scale by the same factor: the framebuffer's width divided by the window's. On other systems it is 1.
    int width = 0;
    int framebufferWidth = 0;
    int unused = 0;
    glfwGetWindowSize(handle, &width, &unused);
    glfwGetFramebufferSize(handle, &framebufferWidth, &unused);
    if (width > 0 && framebufferWidth > 0) monitor *= static_cast<float>(width) / static_cast<float>(framebufferWidth);
    return monitor > 0.0f ? monitor : 1.0f;
}

// Returns for each monitor the area in which the window's content can be. The primary monitor comes first.
std::vector<ScreenArea> UiHost::Window::contentAreas() const {
    WindowFrame frame;
    glfwGetWindowFrameSize(handle, &frame.left, &frame.top, &frame.right, &frame.bottom);
    std::vector<ScreenArea> areas;
    int count = 0;
    GLFWmonitor** monitors = glfwGetMonitors(&count);
    for (int i = 0; i < count; ++i) {
        ScreenArea area;
        glfwGetMonitorWorkarea(monitors[i], &area.x, &area.y, &area.width, &area.height);
        if (area.width > 0 && area.height > 0) areas.push_back(insideFrame(area, frame));
    }
    return areas;
}

ScreenArea UiHost::Window::minimumSize(int atZoom) const {
    const float factor = contentScale() * static_cast<float>(atZoom) / 100.0f;
    return {0, 0, scaled(desc.minWidth, factor), scaled(desc.minHeight, factor)};
}

void UiHost::Window::limitSize() {
    ScreenArea minimum = minimumSize(zoom);
    for (const ScreenArea& area : contentAreas()) { // the minimum must not be larger than a monitor
        minimum.width = std::min(minimum.width, area.width);
        minimum.height = std::min(minimum.height, area.height);
    }
    glfwSetWindowSizeLimits(handle, minimum.width, minimum.height, GLFW_DONT_CARE, GLFW_DONT_CARE);
}

void UiHost::Window::followScale() {
    const float now = contentScale() * static_cast<float>(zoom) / 100.0f;
    if (now == scale) return;
    scale = now;
    limitSize();
}

void UiHost::Window::zoomBy(int steps) {
    const std::vector<ScreenArea> areas = contentAreas();
    const int wanted = steps == 0 ? 100 : stepZoom(zoom, steps, largestZoom(areas, minimumSize(100)));
    if (wanted == zoom) return;
    zoom = wanted;
    followScale();
    placementChangedAt = glfwGetTime();
    if (glfwGetWindowAttrib(handle, GLFW_MAXIMIZED) == GLFW_TRUE) return;
    WindowPlacement now;
    glfwGetWindowPos(handle, &now.x, &now.y);
    glfwGetWindowSize(handle, &now.width, &now.height);
    const WindowPlacement fitted = fitPlacement(now, areas, minimumSize(zoom));
    if (fitted == now) return;
    glfwSetWindowSize(handle, fitted.width, fitted.height);
    glfwSetWindowPos(handle, fitted.x, fitted.y);
}

void UiHost::Window::place() {
    constexpr int kNowhere = -100'000; // outside all areas, so that fitPlacement centres the window
    WindowPlacement wanted{kNowhere, kNowhere, desc.width, desc.height};
    if (!placementFile.empty() && (placement = readPlacement(placementFile))) wanted = *placement;
    const std::vector<ScreenArea> areas = contentAreas();
    zoom = std::min(wanted.zoom, largestZoom(areas, minimumSize(100)));
    followScale();
    wanted.width = scaled(wanted.width, contentScale());
    wanted.height = scaled(wanted.height, contentScale());
    const WindowPlacement fitted = fitPlacement(wanted, areas, minimumSize(zoom));
    glfwSetWindowSize(handle, fitted.width, fitted.height);
    if (!areas.empty()) glfwSetWindowPos(handle, fitted.x, fitted.y);
    if (fitted.maximized) glfwMaximizeWindow(handle);
}

void UiHost::Window::rememberPlacement() {
    placementChangedAt = 0.0;
    if (placementFile.empty()) return;
    const bool maximized = glfwGetWindowAttrib(handle, GLFW_MAXIMIZED) == GLFW_TRUE;
    const bool iconified = glfwGetWindowAttrib(handle, GLFW_ICONIFIED) == GLFW_TRUE;
    WindowPlacement now = placement.value_or(WindowPlacement{0, 0, desc.width, desc.height});
    // The size to which a maximized or iconified window will be restored is unknown, so keep the last known size.
    if (!maximized && !iconified) {
        glfwGetWindowPos(handle, &now.x, &now.y);
        glfwGetWindowSize(handle, &now.width, &now.height);
        now.width = scaled(now.width, 1.0f / contentScale());
        now.height = scaled(now.height, 1.0f / contentScale());
    }
    now.maximized = maximized;
    now.zoom = zoom;
    if (now == placement) return;
    if (writePlacement(placementFile, now)) placement = now; // a failed write is not reported
}

// Saves the placement while the program runs, because SIGTERM, Ctrl+C and the end of the session skip shutdown().
void UiHost::Window::rememberSettledPlacement() {
    if (placementChangedAt > 0.0 && glfwGetTime() - placementChangedAt >= kSettleSeconds) rememberPlacement();
}
