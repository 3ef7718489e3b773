#pragma once

// Keeps two launchers from installing at the same time. One lock protects the downloads directory, the other the
// staging directory, because two launchers may share only one of these directories. Install worker only.

#include <string>

#include "install/update_cancellation.h"
#include "system/file_lock.h"

// The destructor releases the locks.
class InstallLocks {
  public:
    enum class Waiting { No, Yes, Cancelled };

    // Takes both locks, always in the same order. Waits while another launcher holds one; a cancel ends the wait. Does
    // without a lock whose file cannot be created or locked. Returns Waiting::Yes if it had to wait: the other launcher
    // may have changed the editor in the meantime.
    [[nodiscard]] Waiting take(const std::string& downloadsDirectory, const std::string& editorDirectory,
                               const UpdateCancellation& stop);

  private:
    FileLock downloads_;
    FileLock staging_;
};
