#pragma once

// Holds a callback that keeps the launcher's window painted while a dialog of operating_system.h blocks the frame
// thread. Frame thread only.

#include <cstdint>
#include <functional>
#include <utility>

// On Linux the hook is called about every 30 ms while the dialog is open. `process` is the process identifier of the
// dialog program, or 0 if the portal shows the dialog. On Windows the hook is called once, with 0, after the dialog has
// closed: while the dialog is open, its message loop delivers the window's repaint messages.
using DialogHook = std::function<void(std::int64_t process)>;

inline DialogHook currentDialogHook; // empty: the dialogs call nothing

// Replaces the hook. Set an empty hook before an object that the hook uses is destroyed.
inline void setDialogHook(DialogHook hook) {
    currentDialogHook = std::move(hook);
}
