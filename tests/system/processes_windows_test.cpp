// Editors and single-instance guards as real processes, and text conversions.

#include <filesystem>
#include <map>
#include <sstream>
#include <string>

#include <windows.h>
#include <gtest/gtest.h>

#include "support/eventually.h"
#include "support/scoped_environment.h"
#include "support/temporary_folder.h"
#include "system/operating_system.h"
#include "system/private_file.h"
#include "system/single_instance.h"
#include "system/wide_text_windows.h"

namespace fs = std::filesystem;

namespace {

using Report = std::map<std::string, std::string>;

// A folder with blanks in its name that holds copies of the child.
struct Stage {
    TemporaryFolder folder;
    ScopedEnvironment reportTo{"VOLO_CHILD_REPORT", (folder / "report").string()};
    ScopedEnvironment until{"VOLO_CHILD_UNTIL"};

    std::string childNamed(const std::string& name) {
        const fs::path copy = folder / "a folder with blanks" / name;
        fs::create_directories(copy.parent_path());
        fs::copy_file(fs::path(launcherDirectory()) / "volo_test_child.exe", copy,
                      fs::copy_options::overwrite_existing);
        return copy.string();
    }

    Report readReport() {
        std::string text;
        EXPECT_TRUE(eventually([&] { return !(text = readFileBytes(folder / "report")).empty(); }))
            << "the child wrote no report";
        std::istringstream lines(text);
        Report values;
        for (std::string line; std::getline(lines, line);)
            values[line.substr(0, line.find('='))] = line.substr(line.find('=') + 1);
        fs::remove(folder / "report");
        return values;
    }
};

} // namespace

TEST(WindowsProcesses, ArgumentsArriveUnchanged) {
    Stage stage;
    const std::string child = stage.childNamed("my editor.exe");
    for (const std::string argument :
         {R"(C:\ends in a backslash\)", R"(a"b)", R"(a\\"b c\\\)", R"("")", "tab\there", R"(%PATH% & ^ | > x)"}) {
        std::string errorText;
        ASSERT_TRUE(launchEditorProcess(child, argument, stage.folder.string(), errorText)) << errorText;
        Report report = stage.readReport();
        EXPECT_EQ(report["count"], "1") << argument;
        EXPECT_EQ(report["argument"], argument);
        EXPECT_EQ(report["system"], argument);
        EXPECT_EQ(report["program"], child);
        EXPECT_EQ(report["directory"], stage.folder.string());
    }
    std::string errorText;
    ASSERT_TRUE(launchEditorProcess(child, "", "", errorText)) << errorText;
    Report report = stage.readReport();
    EXPECT_EQ(report["count"], "0");
    EXPECT_EQ(report["directory"], fs::current_path().string());
}

TEST(WindowsProcesses, EditorGetsNoConsoleAndNoHandleOfTheLauncher) {
    Stage stage;
    SECURITY_ATTRIBUTES inheritable{sizeof inheritable, nullptr, TRUE};
    // The last handle has a number that the child does not use itself.
    std::vector<HANDLE> events(500);
    for (HANDLE& event : events)
        event = CreateEventW(&inheritable, TRUE, FALSE, nullptr);
    const ScopedEnvironment number("VOLO_CHILD_HANDLE",
                                   std::to_string(reinterpret_cast<std::uintptr_t>(events.back())));
    std::string errorText;
    ASSERT_TRUE(launchEditorProcess(stage.childNamed("editor.exe"), "", "", errorText)) << errorText;
    Report report = stage.readReport();
    EXPECT_EQ(report["handle"], "0");
    EXPECT_EQ(report["console"], "0");
    for (const HANDLE event : events)
        CloseHandle(event);
}

TEST(WindowsProcesses, FailedStartNamesTheSystemsError) {
    Stage stage;
    const std::string notAProgram = stage.folder.write("editor.exe", "text").string();
    const struct {
        std::string executable, folder, text;
    } cases[] = {
        {"", "", "No executable was provided."},
        {(stage.folder / "gone.exe").string(), "", "Starting the editor process failed (error 2)."},
        {notAProgram, "", "Starting the editor process failed (error 193)."},
        {stage.childNamed("x.exe"), (stage.folder / "gone").string(),
         "Starting the editor process failed (error 267)."},
    };
    for (const auto& one : cases) {
        std::string errorText;
        EXPECT_FALSE(launchEditorProcess(one.executable, "x", one.folder, errorText)) << one.executable;
        EXPECT_EQ(errorText, one.text);
    }
}

TEST(WindowsProcesses, RunningEditorIsFoundByNameInAnyCase) {
    Stage stage;
    int round = 0; // names that differ in case alone are one file
    for (const auto& [name, counts] : {std::pair("EdItOr.ExE", true), {"editor.exe", true}, {"editor2.exe", false}}) {
        const fs::path end = stage.folder / ("end of " + std::to_string(++round));
        const ScopedEnvironment until("VOLO_CHILD_UNTIL", end.string());
        EXPECT_FALSE(isEditorRunning()) << "before " << name;
        std::string errorText;
        ASSERT_TRUE(launchEditorProcess(stage.childNamed(name), "", "", errorText)) << errorText;
        stage.readReport(); // it runs
        EXPECT_EQ(isEditorRunning(), counts) << name;
        stage.folder.write(end.filename(), "");
        EXPECT_TRUE(eventually([] { return !isEditorRunning(); })) << name;
    }
}

TEST(WindowsProcesses, OneInstanceHoldsTheGuardUntilItDies) {
    Stage stage;
    const ScopedEnvironment until("VOLO_CHILD_UNTIL", (stage.folder / "never").string());
    std::wstring commandLine = quoteCommandLineArgument(stage.childNamed("instance.exe")) + L" --guard";
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process{};
    ASSERT_TRUE(
        CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &process));
    stage.readReport(); // written after it took the guard
    EXPECT_TRUE(SingleInstanceGuard().anotherInstanceRuns());
    TerminateProcess(process.hProcess, 1);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    EXPECT_TRUE(eventually([] { return !SingleInstanceGuard().anotherInstanceRuns(); }));

    SingleInstanceGuard first;
    EXPECT_TRUE(SingleInstanceGuard().anotherInstanceRuns());
    const HANDLE mutex = CreateMutexW(nullptr, FALSE, L"Local\\VoloLauncherSingleInstanceMutex");
    EXPECT_EQ(GetLastError(), DWORD{ERROR_ALREADY_EXISTS}) << "other programs know the guard by this name";
    CloseHandle(mutex);
    first.release();
    EXPECT_FALSE(SingleInstanceGuard().anotherInstanceRuns());
}

TEST(WindowsText, WideningAndNarrowingKeepAsciiOnly) {
    EXPECT_EQ(widenBytes("a\xC3\xA4\x7F"), (std::wstring{L'a', wchar_t(0xFFC3), wchar_t(0xFFA4), wchar_t(0x7F)}));
    EXPECT_EQ(narrowUnits(L"a\u0141\u00E4"), "a\x41\xE4");
    EXPECT_EQ(fs::path("\xE4\\a"), widenBytes("\xE4\\a")) << "narrowed text is still a path";
}

TEST(WindowsFiles, PrivateTextHasCarriageReturns) {
    const TemporaryFolder folder;
    const std::string file = (folder / "\xC3\xA4.conf").string();
    EXPECT_TRUE(writePrivateFile(file, "a long first version\n"));
    EXPECT_TRUE(writePrivateFile(file, "one\ntwo\n"));
    EXPECT_EQ(readFileBytes(fs::path(file)), "one\r\ntwo\r\n");
    EXPECT_FALSE(writePrivateFile((folder / "gone" / "file").string(), "x"));
}

TEST(WindowsFolders, AreEmptyWithoutTheEnvironment) {
    const ScopedEnvironment noData("APPDATA");
    const ScopedEnvironment noProfile("USERPROFILE");
    EXPECT_EQ(userDataDirectory(), "");
    EXPECT_EQ(userDocumentsDirectory(), "");
}
