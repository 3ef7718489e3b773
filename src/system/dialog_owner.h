#pragma once

// What the dialogs of operating_system.h have to know of the window that they stand in front of. Set once, by the
// program that has one; frame thread only.

#include <cstdint>
#include <functional>

struct DialogOwner {
    std::uint64_t window = 0; // as the window system names it; 0: not known
    // Called again and again while a dialog is open, with the number of its process; empty: nobody needs to be.
    std::function<void(std::int64_t process)> serve;
};

inline DialogOwner& dialogOwner() {
    static DialogOwner owner;
    return owner;
}
