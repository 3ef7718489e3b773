#include "install/editor_location.h"

#include <gtest/gtest.h>

#include "support/settable_system.h"
#include "support/temporary_folder.h"

namespace fs = std::filesystem;

TEST(EditorLocation, TakesTheFirstPlaceThatHoldsAFile) {
    const struct {
        std::vector<std::string> files;
        std::vector<std::string> directories;
        std::string found;
    } cases[] = {
        {{"editor.exe", "bin/editor.exe", "editor/editor.exe"}, {}, "editor/editor.exe"},
        {{"editor.exe", "bin/editor.exe"}, {}, "bin/editor.exe"},
        {{"editor.exe"}, {}, "editor.exe"},
        {{"bin/editor.exe"}, {"editor/editor.exe"}, "bin/editor.exe"},
        {{"editor"}, {"editor.exe"}, ""}, // a file where a directory is expected, a directory where a file is
        {{}, {}, ""},
    };
    for (const auto& c : cases) {
        const TemporaryFolder folder;
        for (const std::string& file : c.files)
            folder.write(file, "x");
        for (const std::string& directory : c.directories)
            fs::create_directories(folder / directory);
        const std::string want = c.found.empty() ? "" : (folder / c.found).string();
        EXPECT_EQ(findEditorExecutable(folder.string()), want) << c.found;
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
