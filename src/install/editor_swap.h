#pragma once

// Puts the extracted editor into the place of the installed one. Blocking; install worker only.

#include <string>

#include "install/run_stop.h"

// Deletes the managed editor directory and renames the staging directory to it. Keeps no copy of the old editor. Tries
// again for up to 10 s while another program holds a file (Windows); closing ends that.
// False when the rename fails: then the staging directory is deleted, and the old editor wholly or in part.
[[nodiscard]] bool swapIn(const std::string& stagingDirectory, const RunStop& stop);
