#include <utility>

#include "ui/ui_host_platform.h"

#define GLFW_EXPOSE_NATIVE_WIN32
#include <GLFW/glfw3.h>
#include <GLFW/glfw3native.h>
#include <dwmapi.h>
#include <shobjidl.h>

bool startWindowSystem() {
    return glfwInit() == GLFW_TRUE;
}

GLFWcursor* stillPointer(ImGuiMouseCursor /*cursor*/) {
    return nullptr;
}

int fastContextApi() {
    return GLFW_NATIVE_CONTEXT_API;
}

void darkenTitleBar(GLFWwindow* window) {
    const HWND handle = glfwGetWin32Window(window);
    const BOOL dark = TRUE;
    // The value of DWMWA_USE_IMMERSIVE_DARK_MODE, which older headers do not define. In Windows 10 before version 2004
    // the value is 19.
    constexpr DWORD kUseDarkMode = 20;
    if (FAILED(DwmSetWindowAttribute(handle, kUseDarkMode, &dark, sizeof dark)))
        DwmSetWindowAttribute(handle, kUseDarkMode - 1, &dark, sizeof dark);
}

void showTaskbarProgress(GLFWwindow* window, int percent) {
    static ITaskbarList3* taskbar = nullptr; // never released before the process ends
    static bool tried = false;
    if (!std::exchange(tried, true)) {
        static_cast<void>(
            CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)); // fails if the thread is already initialised
        if (FAILED(CoCreateInstance(CLSID_TaskbarList, nullptr, CLSCTX_INPROC_SERVER, IID_ITaskbarList3,
                                    reinterpret_cast<void**>(&taskbar))) ||
            FAILED(taskbar->HrInit()))
            taskbar = nullptr;
    }
    if (taskbar == nullptr) return;
    const HWND handle = glfwGetWin32Window(window);
    taskbar->SetProgressState(handle, percent < 0 ? TBPF_NOPROGRESS : TBPF_NORMAL);
    if (percent >= 0) taskbar->SetProgressValue(handle, static_cast<ULONGLONG>(percent), 100);
}

bool keepInFront(std::int64_t /*process*/, GLFWwindow* /*owner*/) {
    return false; // not needed: Windows keeps the dialogs of our own process in front
}
