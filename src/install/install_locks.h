#pragma once

// The locks that keep two launchers from installing at the same time. One protects the downloads directory, the other
// the staging folder, because two launchers can share either of them. Install worker.

#include <string>

#include "install/update_cancellation.h"
#include "system/file_lock.h"

// Holds the locks until it is destroyed.
class InstallLocks {
  public:
    enum class Waiting { No, Yes, Cancelled };

    // Takes both locks, always in the same order. Waits while another launcher holds one; a cancel ends the wait. If a
    // lock file cannot be created, the run continues without this lock. After Waiting::Yes, the other launcher may have
    // changed the editor.
    [[nodiscard]] Waiting take(const std::string& downloadsDirectory, const std::string& editorDirectory,
                               const UpdateCancellation& stop);

  private:
    FileLock downloads_;
    FileLock staging_;
};
