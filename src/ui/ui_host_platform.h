#pragma once

// Declares the functions of the host that differ between window systems. Main thread only.

#include <cstdint>

#include <imgui.h>

struct GLFWcursor;
struct GLFWwindow;

// Calls glfwInit. With GLFW 3.4 it chooses between Wayland and X11 first; older versions are built for one of them.
// Call it before other threads start, because on Linux it changes the environment for a moment. False if glfwInit
// failed.
[[nodiscard]] bool startWindowSystem();

// Returns a pointer with a single picture, for a window whose pixels are not scaled. Null: use the backend's pointer.
// Only for Wayland: GLFW 3.4 sets the pictures of the user's theme anew every 50 ms, because themes give this delay
// even to pictures that do not move. The process then never rests while the pointer is over the window.
[[nodiscard]] GLFWcursor* stillPointer(ImGuiMouseCursor cursor);

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
