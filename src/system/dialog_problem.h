#pragma once

// Tells the window that a dialog could not be shown, so that it can say so. Frame thread only.

#include <string>
#include <utility>

inline std::string currentDialogProblem; // set by the dialogs; empty: none

// The text for the user about a dialog that could not be shown since the last call; empty when there was none.
[[nodiscard]] inline std::string takeDialogProblem() {
    return std::exchange(currentDialogProblem, {});
}
