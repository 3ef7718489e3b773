#pragma once

// Shows the file dialog of the desktop portal: org.freedesktop.portal.FileChooser over D-Bus. Frame thread only. Blocks
// until the user has chosen or cancelled. Calls the dialog hook during the wait.

#include <string>

enum class DialogOutcome { Unavailable, Answered };

// Lets the user choose a folder or a project file. The dialog starts in `folder`, unless `folder` is empty. Sets
// `choice` to the chosen path; empty after a cancel. Returns Unavailable if there is no session bus or no portal, or if
// the portal could not show a dialog.
[[nodiscard]] DialogOutcome askPortal(const std::string& title, const std::string& folder, bool chooseFolder,
                                      std::string& choice);
