#include "install/editor_location.h"

#include <gtest/gtest.h>

#include "support/recording_system.h"
#include "support/temporary_folder.h"

namespace fs = std::filesystem;

TEST(EditorLocation, IsTheFirstFileAtMostTwoLevelsAboveTheLauncher) {
    const TemporaryFolder folder;
    const std::string here = (folder / "a/b/c").string();
    recordingSystem().launcherDirectory = here;
    fs::create_directories(here + "/editor.exe"); // a directory with this name is not an editor
    folder.write("editor.exe", "three levels up");
    EXPECT_EQ(findEditorNearLauncher(), "");
    fs::remove(here + "/editor.exe");
    for (const char* nearer : {"a/bin/editor.exe", "a/b/editor.exe", "a/b/c/editor.exe", "a/b/c/bin/editor.exe",
                               "a/b/c/editor/editor.exe"}) {
        const std::string path = folder.write(nearer, "x").string();
        EXPECT_EQ(findEditorNearLauncher(), path);
    }
    EXPECT_EQ(fs::path(findManagedEditor()), fs::path(here + "/editor/editor.exe"));
    // If the launcher's directory is unknown, the current directory must not be searched instead.
    recordingSystem().launcherDirectory.clear();
    const fs::path before = fs::current_path();
    fs::current_path(here);
    EXPECT_EQ(findEditorNearLauncher(), "");
    fs::current_path(before);
}
