#include <cerrno>
#include <csignal>
#include <filesystem>
#include <iterator>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "processes_fixture.h"
#include "system/spawn_linux.h"

namespace {

namespace fs = std::filesystem;

bool hasNoChildren() {
    siginfo_t info{};
    return ::waitid(P_ALL, 0, &info, WEXITED | WNOHANG | WNOWAIT) != 0 && errno == ECHILD;
}

std::ptrdiff_t entryCount(const char* directory) {
    return std::distance(fs::directory_iterator(directory), fs::directory_iterator());
}

using LinuxProcesses = Processes;

TEST_F(LinuxProcesses, EditorIsSeenByItsFileAndByItsFirstArgument) {
    const struct {
        const char* file;
        std::vector<std::string> arguments;
        bool seen;
    } cases[] = {
        {"viewer", {"viewer", "editor.exe"}, false},
        {"a) editor.exe", {"other"}, false},
        {"EDITOR.EXE", {"x"}, true},
        {"renamed", {"/opt/My Editor/Editor.exe"}, true},
        {"wine", {"C:\\Program Files\\editor.exe"}, true},
    };
    for (const auto& [file, arguments, seen] : cases) {
        ASSERT_EQ(spawnDetached(arguments, "", childNamed(file)), 0);
        (void)nextReport(); // waits until the child runs
        EXPECT_TRUE(eventually([seen = seen] { return isEditorRunning() == seen; })) << file;
        if (seen) endChildren();
    }
    letChildrenEnd();
    const SpawnResult zombie = spawnProgram({childNamed("editor.exe")}, STDERR_FILENO);
    siginfo_t info{};
    ASSERT_EQ(::waitid(P_PID, static_cast<id_t>(zombie.process), &info, WEXITED | WNOWAIT), 0);
    EXPECT_TRUE(eventually([] { return !isEditorRunning(); })) << "a zombie does not run";
    ::waitpid(zombie.process, nullptr, 0);
}

TEST_F(LinuxProcesses, EditorOfARelativeNameInheritsNothing) {
    letChildrenEnd();
    const fs::path editor = fs::path(childNamed("editor.exe")).lexically_relative(folder_.path());
    const fs::path before = fs::current_path();
    fs::current_path(folder_.path());
    const int leak = ::fcntl(STDERR_FILENO, F_DUPFD, 200); // without FD_CLOEXEC
    sigset_t blocked, old;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGTERM);
    ::pthread_sigmask(SIG_BLOCK, &blocked, &old);
    auto* const pipeHandler = std::signal(SIGPIPE, SIG_IGN);
    launch(editor.string(), "", "/"); // the name is relative to this process's working directory, not to "/"
    std::signal(SIGPIPE, pipeHandler);
    ::pthread_sigmask(SIG_SETMASK, &old, nullptr);
    ::close(leak);
    fs::current_path(before);

    Report report = nextReport();
    EXPECT_EQ(report["descriptors"], "0:/dev/null 1:/dev/null 2:/dev/null ");
    EXPECT_EQ(report["signals"], "");
    EXPECT_EQ(report["session"], "own") << "the end of the launcher's session would end the editor";
}

TEST_F(LinuxProcesses, TwoHundredStartsLeaveNothingBehind) {
    letChildrenEnd();
    const std::string editor = childNamed("editor.exe");
    launch(editor); // during the first start, the sanitizers create a thread that they keep
    ASSERT_TRUE(eventually(hasNoChildren));
    const std::ptrdiff_t descriptors = entryCount("/proc/self/fd"), threads = entryCount("/proc/self/task");
    for (int i = 0; i < 200; ++i)
        launch(editor);
    EXPECT_TRUE(eventually(hasNoChildren)) << "a zombie is left";
    EXPECT_TRUE(eventually([&] { return entryCount("/proc/self/task") <= threads; }));
    EXPECT_EQ(entryCount("/proc/self/fd"), descriptors);
}

TEST_F(LinuxProcesses, GuardIsInTheRuntimeOrDataFolderOrNobodyIsStopped) {
    const std::string instance = childNamed("editor.exe");
    EXPECT_EQ(instancesWithGuard(instance, 2), 1);
    const fs::path lock = folder_ / "VoloLauncherSingleInstanceMutex";
    EXPECT_EQ(fs::status(lock).permissions(), fs::perms(0600));
    const ScopedEnvironment noRuntime("XDG_RUNTIME_DIR");
    {
        const ScopedEnvironment applicationData("APPDATA", folder_.string());
        EXPECT_EQ(instancesWithGuard(instance, 2), 1);
    }
    const ScopedEnvironment noData("APPDATA"), noConfig("XDG_CONFIG_HOME"), noHome("HOME");
    EXPECT_EQ(instancesWithGuard(instance, 2), 2);
    const ScopedEnvironment runtime("XDG_RUNTIME_DIR", folder_.string());
    fs::remove(lock);
    fs::create_symlink(folder_.write("precious", "kept"), lock);
    EXPECT_EQ(instancesWithGuard(instance, 2), 2) << "a link must not be followed";
}

} // namespace
