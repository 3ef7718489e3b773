#pragma once

// The file dialog of the desktop portal: org.freedesktop.portal.FileChooser over D-Bus. Frame thread only. Blocks until
// the user answers, and calls the dialog hook meanwhile.

#include <string>

enum class DialogOutcome { Unavailable, Answered };

// Asks for a folder, or for a project file. The dialog starts in `folder` unless that is empty. `choice` is the chosen
// path, or empty after a cancel. Unavailable when there is no session bus, no portal, or its dialog failed.
[[nodiscard]] DialogOutcome askPortal(const std::string& title, const std::string& folder, bool chooseFolder,
                                      std::string& choice);
