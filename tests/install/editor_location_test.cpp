#include "install/editor_location.h"

#include <gtest/gtest.h>

#include "support/recording_system.h"
#include "support/temporary_folder.h"

namespace fs = std::filesystem;

TEST(EditorLocation, IsTheFirstPlaceThatHoldsAFileAtMostTwoLevelsAboveTheLauncher) {
    const TemporaryFolder folder;
    const std::string here = (folder / "a/b/c").string();
    recordingSystem().launcherDirectory = here;
    fs::create_directories(here + "/editor.exe"); // a directory where a file is expected
    folder.write("a/b/c/bin", "a file where a directory is");
    folder.write("editor.exe", "three levels up");
    EXPECT_EQ(findEditorNearLauncher(), "");
    fs::remove_all(here + "/editor.exe");
    fs::remove(here + "/bin");
    for (const char* nearer : {"a/bin/editor.exe", "a/b/editor.exe", "a/b/c/editor.exe", "a/b/c/bin/editor.exe",
                               "a/b/c/editor/editor.exe"}) {
        const std::string path = folder.write(nearer, "x").string();
        EXPECT_EQ(findEditorNearLauncher(), path);
        EXPECT_EQ(findEditorExecutable(here), path.starts_with(here) ? path : "");
    }
    EXPECT_EQ(fs::path(findManagedEditor()), fs::path(here + "/editor/editor.exe"));
    recordingSystem().launcherDirectory.clear();
    EXPECT_EQ(findEditorNearLauncher() + findEditorExecutable(""), "");
}

TEST(EditorLocation, ReadsTheMarkersFirstLineWithoutItsEnd) {
    const TemporaryFolder folder;
    recordingSystem().launcherDirectory = folder.string();
    EXPECT_EQ(installedEditorVersion(), "");
    const std::pair<std::string, std::string> cases[] = {
        {"1.2 \r\n", "1.2"},  {"1.2\t\n", "1.2\t"},
        {" \t1.2", " \t1.2"}, {"", ""},
        {" \r \n1", ""},      {"1.2+b ü\nsecond", "1.2+b ü"},
        {"\n1.2", ""},        {std::string("1\0002\n", 4), {"1\0002", 3}},
    };
    for (const auto& [bytes, line] : cases) {
        folder.write("editor/.zantor_editor_version", bytes);
        EXPECT_EQ(installedEditorVersion(), line);
    }
    EXPECT_EQ(readFirstLine(folder.string()), ""); // a directory
}
