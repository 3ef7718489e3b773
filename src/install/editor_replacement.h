#pragma once

// Replaces the installed editor with the extracted one. Blocking; install worker only.

#include <string>

#include "install/update_cancellation.h"

// Deletes the managed editor directory and renames the staging directory to it. Keeps no copy of the old editor. On
// Windows it tries again for up to 10 s while another program uses a file, or until the launcher closes.
// Returns false if the rename fails. Then the staging directory and some or all files of the old editor are deleted.
[[nodiscard]] bool replaceEditor(const std::string& stagingDirectory, const UpdateCancellation& stop);
