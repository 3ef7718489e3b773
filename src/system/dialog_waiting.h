#pragma once

// What the program does while one of operating_system.h's dialogs holds up the frame thread: set once by whoever has a
// window to look after, and called again and again with the number of the dialog's process, or once at the end with 0
// where the system itself looks after the window. Empty: nothing. Frame thread only.

#include <cstdint>
#include <functional>

inline std::function<void(std::int64_t process)>& whileDialogIsOpen() {
    static std::function<void(std::int64_t process)> attend;
    return attend;
}
