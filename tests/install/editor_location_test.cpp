#include "install/editor_location.h"

#include <gtest/gtest.h>

#include "support/settable_system.h"
#include "support/temporary_folder.h"

namespace fs = std::filesystem;

TEST(EditorLocation, TakesTheFirstPlaceThatHoldsAFile) {
    const TemporaryFolder folder;
    fs::create_directories(folder / "editor.exe"); // a directory where a file is expected
    folder.write("bin", "a file where a directory is");
    EXPECT_EQ(findEditorExecutable(folder.string()), "");
    fs::remove_all(folder / "editor.exe");
    fs::remove(folder / "bin");
    for (const char* nearer : {"editor.exe", "bin/editor.exe", "editor/editor.exe"}) {
        const std::string path = folder.write(nearer, "x").string();
        EXPECT_EQ(findEditorExecutable(folder.string()), path);
    }
    EXPECT_EQ(findEditorExecutable(""), "");
}

TEST(EditorLocation, LooksTwoLevelsAboveTheLauncherAndNoFurther) {
    const TemporaryFolder folder;
    setLauncherDirectory((folder / "a/b/c").string());
    fs::create_directories(folder / "a/b/c");
    folder.write("editor.exe", "three levels up");
    EXPECT_EQ(findEditorNearLauncher(), "");
    for (const char* nearer : {"a/bin/editor.exe", "a/b/editor.exe", "a/b/c/editor/editor.exe"}) {
        const std::string path = folder.write(nearer, "x").string();
        EXPECT_EQ(findEditorNearLauncher(), path);
    }
    EXPECT_EQ(findManagedEditor(), (folder / "a/b/c/editor/editor.exe").string());

    setLauncherDirectory("");
    EXPECT_EQ(findEditorNearLauncher(), "");
}

TEST(EditorLocation, ReadsTheMarkersFirstLineWithoutItsEnd) {
    const TemporaryFolder folder;
    setLauncherDirectory(folder.string());
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
