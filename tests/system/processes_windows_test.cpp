// Tests what an editor inherits, the name of the guard, text conversions, and the user's folders.

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include <windows.h>

#include "processes_fixture.h"
#include "system/single_instance.h"
#include "system/wide_text_windows.h"

using WindowsProcesses = Processes;

TEST_F(WindowsProcesses, EditorGetsNoConsoleAndNoHandleOfTheLauncher) {
    SECURITY_ATTRIBUTES inheritable{sizeof inheritable, nullptr, TRUE};
    // So many handles are opened that the child has no handle of its own with the number of the last one.
    std::vector<HANDLE> events(500);
    for (HANDLE& event : events)
        event = CreateEventW(&inheritable, TRUE, FALSE, nullptr);
    const ScopedEnvironment number("VOLO_CHILD_HANDLE",
                                   std::to_string(reinterpret_cast<std::uintptr_t>(events.back())));
    launch(childNamed("editor.exe"));
    Report report = nextReport();
    EXPECT_EQ(report["handle"], "0");
    EXPECT_EQ(report["console"], "0");
    for (const HANDLE event : events)
        CloseHandle(event);
}

TEST(WindowsGuard, OtherProgramsKnowItByItsName) {
    const SingleInstanceGuard guard;
    const HANDLE mutex = CreateMutexW(nullptr, FALSE, L"Local\\VoloLauncherSingleInstanceMutex");
    EXPECT_EQ(GetLastError(), DWORD{ERROR_ALREADY_EXISTS});
    CloseHandle(mutex);
}

TEST(WindowsText, WideningAndNarrowingKeepAsciiOnly) {
    EXPECT_EQ(widenBytes("a\xC3\xA4\x7F"), (std::wstring{L'a', wchar_t(0xFFC3), wchar_t(0xFFA4), wchar_t(0x7F)}));
    EXPECT_EQ(narrowUnits(L"a\u0141\u00E4"), "a\x41\xE4");
    EXPECT_EQ(std::filesystem::path("\xE4\\a"), widenBytes("\xE4\\a")) << "narrowed text is still a path";
}

TEST(WindowsFolders, AreEmptyWithoutTheEnvironment) {
    const ScopedEnvironment noData("APPDATA"), noProfile("USERPROFILE");
    EXPECT_EQ(userDataDirectory(), "");
    EXPECT_EQ(userDocumentsDirectory(), "");
}
