#pragma once

// Passes the message "no dialog could be shown" from the dialogs to the window. Frame thread only.

#include <string>
#include <utility>

inline std::string currentDialogProblem; // set by the dialogs; empty: no problem

// Returns the message for the user and clears it. Empty if all dialogs since the last call could be shown.
[[nodiscard]] inline std::string takeDialogProblem() {
    return std::exchange(currentDialogProblem, {});
}
