#pragma once

// The title bar in the colours of the window below it. Main thread, before the window shows. Does nothing on releases
// of Windows that know no dark title bars.

struct GLFWwindow;

void darkenFrame(GLFWwindow* window);
