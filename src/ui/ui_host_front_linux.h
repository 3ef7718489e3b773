#pragma once

struct GLFWwindow;

// Tells the window manager that the windows of another process stand in front of ours, as dialogs do. True when there
// was one to tell of; false also where windows have no numbers, as on Wayland.
[[nodiscard]] bool bringToFront(long process, GLFWwindow* owner);
