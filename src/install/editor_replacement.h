#pragma once

// Replaces the installed editor with the extracted one. Blocking; install worker only.

#include <string>

#include "install/update_cancellation.h"

// Deletes the managed editor directory and renames the staging directory to it. Keeps no copy of the old editor. On
// Windows, deletion and rename fail while another program uses a file: the function then retries for at most 10 s, and
// stops earlier if the launcher closes. Returns false if the rename fails. In that case the function has deleted the
// staging directory, and some or all files of the old editor.
[[nodiscard]] bool replaceEditor(const std::string& stagingDirectory, const UpdateCancellation& stop);
