#include "ui/ui_host_frame_windows.h"

#define GLFW_EXPOSE_NATIVE_WIN32
#include <GLFW/glfw3.h>
#include <GLFW/glfw3native.h>
#include <dwmapi.h>

void darkenFrame(GLFWwindow* window) {
    const HWND handle = glfwGetWin32Window(window);
    const BOOL dark = TRUE;
    constexpr DWORD kSince2004 = 20; // DWMWA_USE_IMMERSIVE_DARK_MODE; the releases before had it under 19
    if (FAILED(DwmSetWindowAttribute(handle, kSince2004, &dark, sizeof dark)))
        DwmSetWindowAttribute(handle, kSince2004 - 1, &dark, sizeof dark);
}
