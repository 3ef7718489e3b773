#pragma once

// A callback that keeps the launcher's window painted while a dialog of operating_system.h blocks the frame thread.
// Frame thread only.

#include <cstdint>
#include <functional>
#include <utility>

// On Linux it is called every 30 ms while the dialog is open, with the process identifier of the dialog program, or 0
// if the portal shows the dialog. On Windows the system repaints the window; there the hook is called once, with 0,
// after the dialog has closed.
using DialogHook = std::function<void(std::int64_t process)>;

inline DialogHook currentDialogHook; // empty: the dialogs call nothing

// Replaces the hook. Set an empty hook before an object that the hook uses is destroyed.
inline void setDialogHook(DialogHook hook) {
    currentDialogHook = std::move(hook);
}
