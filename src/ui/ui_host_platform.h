#pragma once

// Declares the functions of the host that differ between window systems. Main thread only.

#include <cstdint>

struct GLFWwindow;

// Chooses between Wayland and X11. Call it before glfwInit. Does nothing on Windows and with GLFW before 3.4, which is
// built for one of them only.
void chooseWindowSystem();

// Returns the context API of GLFW that opens a window fastest. On Linux this is EGL, because Mesa's GLX takes 70 ms
// more. On Windows it is the native API. If no window can be created with it, use GLFW_NATIVE_CONTEXT_API.
[[nodiscard]] int fastContextApi();

// Makes the title bar dark. Call it before the window becomes visible. Does nothing on X11 and Wayland, where the
// window manager chooses the colours.
void darkenTitleBar(GLFWwindow* window);

// Makes the windows of another process transient for our window, so that the window manager keeps them in front. True
// if the process had a window. Always false on Wayland and Windows.
[[nodiscard]] bool keepInFront(std::int64_t process, GLFWwindow* owner);

// Shows a progress in percent in the window's button in the task bar. A negative value hides it. Does nothing if the
// desktop cannot show it.
void showTaskbarProgress(GLFWwindow* window, int percent);
