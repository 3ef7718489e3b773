// Tests the start and the detection of editors, and the single-instance guard.

#include <utility>

#include "processes_fixture.h"
#include "system/single_instance.h"

TEST_F(Processes, EditorIsSeenByItsNameInAnyCase) {
    for (const auto& [name, seen] : {std::pair("myeditor.exe", false), {"EdItOr.ExE", true}}) {
        launch(childNamed(name));
        (void)nextReport(); // waits until the child runs
        EXPECT_TRUE(eventually([seen = seen] { return isEditorRunning() == seen; })) << name;
    }
}

TEST_F(Processes, EditorGetsItsArgumentAndItsDirectory) {
    letChildrenEnd();
    const std::string editor = childNamed("editor.exe");
    for (const std::string& argument :
         {std::string(R"(C:\ends in a backslash\)"), std::string(R"(a\\"b c\\\)"), std::string(R"("")"),
          std::string("tab\there 'd' $(touch x); `y` %PATH% & ^ |"), std::string(3000, 'p')}) {
        launch(editor, argument, folder_.string());
        Report report = nextReport();
        EXPECT_EQ(report["count"], "1") << argument;
        EXPECT_EQ(report["argument"], argument);
        EXPECT_EQ(report["system"], kOnWindows ? argument : "");
        EXPECT_EQ(report["directory"], folder_.string());
    }
    launch(editor);
    Report report = nextReport();
    EXPECT_EQ(report["count"], "0") << "an empty argument is left out";
    EXPECT_EQ(report["directory"], std::filesystem::current_path().string());
}

TEST_F(Processes, FailedStartNamesTheSystemsError) {
    const auto failed = [](int error) {
        return "Starting the editor process failed (error " + std::to_string(error) + ").";
    };
    const struct {
        std::string executable, directory, text;
    } cases[] = {
        {"", "", "No executable was provided."},
        {(folder_ / "missing.exe").string(), "", failed(2)},
        {folder_.write("plain.exe", "text").string(), "", failed(kOnWindows ? 193 : 13)},
        {childNamed("editor.exe"), (folder_ / "missing").string(), failed(kOnWindows ? 267 : 2)},
    };
    for (const auto& [executable, directory, text] : cases) {
        std::string errorText;
        EXPECT_FALSE(launchEditorProcess(executable, "p", directory, errorText)) << executable;
        EXPECT_EQ(errorText, text);
    }
}

TEST_F(Processes, OneInstanceHoldsTheGuardUntilItReleasesOrDies) {
    const std::string instance = childNamed("editor.exe");
    EXPECT_EQ(instancesWithGuard(instance, 8), 1);
    EXPECT_TRUE(SingleInstanceGuard().anotherInstanceRuns());
    endChildren();
    SingleInstanceGuard guard;
    EXPECT_EQ(instancesWithGuard(instance, 1), 0);
    guard.release();
    EXPECT_EQ(instancesWithGuard(instance, 1), 1);
}
