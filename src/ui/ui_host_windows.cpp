#include "ui/ui_host_platform.h"

#define GLFW_EXPOSE_NATIVE_WIN32
#include <GLFW/glfw3.h>
#include <GLFW/glfw3native.h>
#include <dwmapi.h>

void darkenTitleBar(GLFWwindow* window) {
    const HWND handle = glfwGetWin32Window(window);
    const BOOL dark = TRUE;
    // DWMWA_USE_IMMERSIVE_DARK_MODE, which older headers lack. Windows 10 before version 2004 has it under 19.
    constexpr DWORD kUseDarkMode = 20;
    if (FAILED(DwmSetWindowAttribute(handle, kUseDarkMode, &dark, sizeof dark)))
        DwmSetWindowAttribute(handle, kUseDarkMode - 1, &dark, sizeof dark);
}

bool keepInFront(std::int64_t /*process*/, GLFWwindow* /*owner*/) {
    return false; // Windows keeps the dialogs of our own process in front
}
