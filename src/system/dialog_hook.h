#pragma once

// Lets the program look after its own window while one of the dialogs of operating_system.h blocks the frame thread.
// Frame thread only.

#include <cstdint>
#include <functional>
#include <utility>

// Called every few milliseconds with the number of the dialog's process. Windows looks after the window itself and
// calls it once, with 0, after the dialog has closed.
using DialogHook = std::function<void(std::int64_t process)>;

inline DialogHook currentDialogHook; // for the dialogs; empty: they call nothing

// Replaces the hook. Set an empty one before what it refers to is destroyed.
inline void setDialogHook(DialogHook hook) {
    currentDialogHook = std::move(hook);
}
