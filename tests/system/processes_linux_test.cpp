// Editors and single-instance guards as real processes. Other tests on the machine may run an editor for a moment, so
// the tests wait until none runs.

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <iterator>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "support/eventually.h"
#include "support/scoped_environment.h"
#include "support/temporary_folder.h"
#include "system/operating_system.h"
#include "system/single_instance.h"
#include "system/spawn_linux.h"

namespace {

namespace fs = std::filesystem;

const std::string kChild = launcherDirectory() + "/volo_test_child";

bool hasNoChildren() {
    siginfo_t info{};
    return ::waitid(P_ALL, 0, &info, WEXITED | WNOHANG | WNOWAIT) != 0 && errno == ECHILD;
}

std::ptrdiff_t entryCount(const char* directory) {
    return std::distance(fs::directory_iterator(directory), fs::directory_iterator());
}

class Processes : public testing::Test {
  protected:
    std::string copyOfChild(const fs::path& name) const {
        fs::create_directories((folder_ / name).parent_path());
        fs::copy_file(kChild, folder_ / name);
        return (folder_ / name).string();
    }
    void endChildren() const { folder_.write("until", "now"); }
    bool hasReport() const { return fs::exists(report_); }
    // What the child wrote about itself: lines "key=value".
    std::map<std::string, std::string> report() const {
        std::map<std::string, std::string> values;
        std::istringstream lines(readFileBytes(report_));
        for (std::string line; std::getline(lines, line);)
            values[line.substr(0, line.find('='))] = line.substr(line.find('=') + 1);
        return values;
    }
    void TearDown() override {
        endChildren();
        EXPECT_TRUE(eventually(hasNoChildren)) << "a process was left behind";
    }

    TemporaryFolder folder_;
    fs::path report_ = folder_ / "report";
    ScopedEnvironment reportTo_{"VOLO_CHILD_REPORT", report_.string()};
    ScopedEnvironment until_{"VOLO_CHILD_UNTIL", (folder_ / "until").string()};
    ScopedEnvironment runtime_{"XDG_RUNTIME_DIR", folder_.string()};
    std::string errorText_;
};

TEST_F(Processes, EditorIsSeenByItsNameInAnyCase) {
    const struct {
        const char* file;
        std::vector<std::string> arguments;
        bool seen;
    } cases[] = {
        {"b/EDITOR.EXE", {"x"}, true},
        {"c/renamed", {"/opt/My Editor/Editor.exe"}, true},
        {"d/wine", {"C:\\Program Files\\editor.exe"}, true},
        {"e/myeditor.exe", {"/usr/bin/myeditor.exe"}, false},
        {"g/viewer", {"viewer", "editor.exe"}, false},
        {"h/a) editor.exe", {"other"}, false},
    };
    for (const auto& [file, arguments, seen] : cases) {
        SCOPED_TRACE(file);
        ASSERT_TRUE(eventually([] { return !isEditorRunning(); })) << "another editor runs on this machine";
        fs::remove(report_);
        ASSERT_EQ(spawnDetached(arguments, "", copyOfChild(file)), 0);
        ASSERT_TRUE(eventually([&] { return hasReport(); }));
        EXPECT_TRUE(eventually([&] { return isEditorRunning() == seen; }, std::chrono::seconds(seen ? 0 : 20)));
        endChildren();
        ASSERT_TRUE(eventually(hasNoChildren));
        fs::remove(folder_ / "until");
    }
    endChildren();
    const SpawnResult zombie = spawnProgram({copyOfChild("editor.exe")}, STDERR_FILENO);
    siginfo_t info{};
    ASSERT_EQ(::waitid(P_PID, static_cast<id_t>(zombie.process), &info, WEXITED | WNOWAIT), 0);
    EXPECT_TRUE(eventually([] { return !isEditorRunning(); })) << "a zombie does not run";
    ::waitpid(zombie.process, nullptr, 0);
}

TEST_F(Processes, EditorStartsCleanWithItsArgumentUnchanged) {
    endChildren();
    const std::string argument = "--a  b\t\"c\" 'd' $(touch x); `y` & | > \\\\ \xC3\xBC\\" + std::string(3000, 'p');
    const fs::path editor = "My Edit\xC3\xB6r \"1\"/editor.exe"; // relative to the launcher's working directory
    copyOfChild(editor);
    fs::create_directory(folder_ / "work");
    const fs::path before = fs::current_path();
    fs::current_path(folder_.path());
    const int leak = ::fcntl(STDERR_FILENO, F_DUPFD, 200); // without FD_CLOEXEC
    sigset_t blocked, old;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGTERM);
    ::pthread_sigmask(SIG_BLOCK, &blocked, &old);
    auto* const pipeHandler = std::signal(SIGPIPE, SIG_IGN);

    const bool launched = launchEditorProcess(editor.string(), argument, (folder_ / "work").string(), errorText_);

    std::signal(SIGPIPE, pipeHandler);
    ::pthread_sigmask(SIG_SETMASK, &old, nullptr);
    ::close(leak);
    fs::current_path(before);
    ASSERT_TRUE(launched) << errorText_;
    ASSERT_TRUE(eventually([&] { return hasReport(); }));
    const auto values = report();
    EXPECT_EQ(values.at("count"), "1");
    EXPECT_EQ(values.at("argument"), argument);
    EXPECT_EQ(values.at("directory"), (folder_ / "work").string());
    EXPECT_EQ(values.at("descriptors"), "0:/dev/null 1:/dev/null 2:/dev/null ");
    EXPECT_EQ(values.at("SigBlk"), "0000000000000000");
    // The C library ignores two signals of its own, 32 and 33, in what it spawns.
    EXPECT_EQ(std::stoull(values.at("SigIgn"), nullptr, 16) & ~0x180000000ull, 0u);
    EXPECT_EQ(values.at("session"), values.at("process")) << "the end of the launcher's session would end the editor";
}

TEST_F(Processes, FailedStartNamesTheSystemsError) {
    const struct {
        std::string executable, directory, text;
    } cases[] = {
        {"", "", "No executable was provided."},
        {(folder_ / "missing.exe").string(), "", "Starting the editor process failed (error 2)."},
        {folder_.write("plain.exe", "#!/bin/sh\n").string(), "", "Starting the editor process failed (error 13)."},
        {copyOfChild("editor.exe"), (folder_ / "missing").string(), "Starting the editor process failed (error 2)."},
    };
    for (const auto& [executable, directory, text] : cases) {
        EXPECT_FALSE(launchEditorProcess(executable, "p", directory, errorText_)) << executable;
        EXPECT_EQ(errorText_, text);
    }
}

TEST_F(Processes, TwoHundredStartsLeaveNothingBehind) {
    endChildren();
    const std::string editor = copyOfChild("editor.exe");
    const auto startEditor = [&] { return launchEditorProcess(editor, "", "", errorText_); };
    ASSERT_TRUE(startEditor()) << errorText_; // the sanitizers keep a thread from the first start
    ASSERT_TRUE(eventually(hasNoChildren));
    EXPECT_EQ(report().at("count"), "0") << "an empty argument is left out";
    const std::ptrdiff_t descriptors = entryCount("/proc/self/fd"), threads = entryCount("/proc/self/task");
    for (int i = 0; i < 200; ++i)
        ASSERT_TRUE(startEditor()) << errorText_;
    EXPECT_TRUE(eventually(hasNoChildren)) << "a zombie is left";
    EXPECT_TRUE(eventually([&] { return entryCount("/proc/self/task") <= threads; }));
    EXPECT_EQ(entryCount("/proc/self/fd"), descriptors);
}

// --- the guard -------------------------------------------------------------------------------------------------------

class Guards : public Processes {
  protected:
    Guards() { EXPECT_EQ(::pipe2(pipe_, O_CLOEXEC), 0); }
    ~Guards() override {
        ::close(pipe_[0]);
        ::close(pipe_[1]);
    }
    // Starts instances and returns their answers: W holds the guard, L does not.
    std::string start(std::size_t count, const std::vector<std::string>& arguments = {kChild, "--guard"}) {
        for (std::size_t i = 0; i < count; ++i)
            others_.push_back(spawnProgram(arguments, pipe_[1]).process);
        std::string answers(count, '?');
        for (char& answer : answers)
            EXPECT_EQ(::read(pipe_[0], &answer, 1), 1);
        std::sort(answers.begin(), answers.end());
        return answers;
    }
    void TearDown() override {
        endChildren();
        for (const pid_t process : others_)
            ::waitpid(process, nullptr, 0);
        Processes::TearDown();
    }

    int pipe_[2] = {-1, -1};
    std::vector<pid_t> others_;
};

TEST_F(Guards, OneOfManyStartsWinsUntilItReleasesOrDies) {
    EXPECT_EQ(start(20), std::string(19, 'L') + "W");
    EXPECT_TRUE(SingleInstanceGuard().anotherInstanceRuns());
    for (const pid_t process : others_)
        ::kill(process, SIGKILL);
    ASSERT_TRUE(eventually([] { return !SingleInstanceGuard().anotherInstanceRuns(); }));
    SingleInstanceGuard guard;
    EXPECT_EQ(start(1), "L");
    guard.release();
    EXPECT_EQ(start(1), "W");
    EXPECT_EQ(fs::status(folder_ / "VoloLauncherSingleInstanceMutex").permissions(), fs::perms(0600));
}

TEST_F(Guards, EditorOutlivesTheLauncherAndDoesNotKeepItsGuard) {
    ASSERT_EQ(start(1, {kChild, "--launcher", copyOfChild("editor.exe")}), "W");
    int status = -1;
    ::waitpid(others_.back(), &status, 0);
    ASSERT_EQ(status, 0);
    ASSERT_TRUE(eventually([&] { return hasReport(); }));
    EXPECT_EQ(start(1), "W");
    EXPECT_EQ(::kill(std::stoi(report().at("process")), 0), 0) << "the editor died with the launcher";
}

TEST_F(Guards, WithoutRuntimeDirectoryTheGuardIsWithTheUsersDataAndWithoutBothNobodyIsStopped) {
    const ScopedEnvironment noRuntime("XDG_RUNTIME_DIR");
    {
        const ScopedEnvironment applicationData("APPDATA", folder_.string());
        EXPECT_EQ(start(2), "LW");
    }
    const ScopedEnvironment noData("APPDATA"), noConfig("XDG_CONFIG_HOME"), noHome("HOME");
    EXPECT_EQ(start(2), "WW");
    const ScopedEnvironment runtime("XDG_RUNTIME_DIR", folder_.string());
    fs::create_symlink(folder_.write("precious", "kept"), folder_ / "VoloLauncherSingleInstanceMutex");
    EXPECT_EQ(start(2), "WW") << "a link must not be followed";
}

} // namespace
