#pragma once

// What the host asks of one window system alone. Main thread only.

#include <cstdint>

struct GLFWwindow;

// Gives the title bar the dark colours of the window. Call it before the window shows. Does nothing where the window
// manager chooses the colours.
void darkenTitleBar(GLFWwindow* window);

// Makes the windows of another process transient for ours, so that the window manager keeps them in front. True if the
// process had a window. False also where windows cannot be related by process, as on Wayland and Windows.
[[nodiscard]] bool keepInFront(std::int64_t process, GLFWwindow* owner);

// Shows a progress in the window's button of the task bar, in percent, or none for a negative one. Does nothing where
// the desktop cannot show it.
void showTaskbarProgress(GLFWwindow* window, int percent);
