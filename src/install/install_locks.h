#pragma once

// Keeps two launchers from installing at the same time. One lock protects the downloads directory, the other the
// staging directory, because two launchers may share only one of these directories. Install worker only.

#include <string>

#include "install/update_cancellation.h"
#include "system/file_lock.h"

// The destructor releases the locks.
class InstallLocks {
  public:
    // Takes both locks, always in the same order. Waits while another launcher holds one. Does without a lock whose
    // file cannot be created or locked. Returns false if the user cancelled during the wait.
    [[nodiscard]] bool take(const std::string& downloadsDirectory, const std::string& editorDirectory,
                            const UpdateCancellation& stop);

  private:
    FileLock downloads_;
    FileLock staging_;
};
