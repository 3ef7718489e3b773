// Editors and guards as real processes. Other tests of the machine may run editors of their own for a moment, so
// "no editor" is waited for.

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <iterator>
#include <map>
#include <sstream>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
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

bool isZombie(pid_t process) {
    return readFileBytes("/proc/" + std::to_string(process) + "/stat").find(") Z ") != std::string::npos;
}

std::map<std::string, std::string> readReport(const fs::path& file) {
    std::map<std::string, std::string> report;
    std::istringstream lines(readFileBytes(file));
    for (std::string line; report.count("count") == 0 && std::getline(lines, line);) {
        report[line.substr(0, line.find('='))] = line.substr(line.find('=') + 1);
    }
    const std::string rest{std::istreambuf_iterator<char>(lines), std::istreambuf_iterator<char>()};
    report["argument"] = rest.substr(rest.find('=') + 1);
    return report;
}

class Processes : public testing::Test {
  protected:
    std::string copyOfChild(const fs::path& name) const {
        const fs::path copy = folder_ / name;
        fs::create_directories(copy.parent_path());
        fs::copy_file(kChild, copy);
        return copy.string();
    }
    void letGo() const { folder_.write("until", "now"); }
    void TearDown() override {
        letGo();
        EXPECT_TRUE(eventually(hasNoChildren)) << "a process was left behind";
    }

    TemporaryFolder folder_;
    fs::path report_ = folder_ / "report";
    ScopedEnvironment reportTo_{"VOLO_CHILD_REPORT", report_.string()};
    ScopedEnvironment until_{"VOLO_CHILD_UNTIL", (folder_ / "until").string()};
    ScopedEnvironment runtime_{"XDG_RUNTIME_DIR", folder_.string()};
    std::string errorText_;
};

TEST_F(Processes, EditorIsSeenByItsNameInAnyCaseAndByNothingElse) {
    const struct {
        const char* file;
        std::vector<std::string> arguments;
        bool seen;
    } cases[] = {
        {"a/editor.exe", {"x"}, true},
        {"b/EDITOR.EXE", {"x"}, true},
        {"c/renamed", {"/opt/My Editor/Editor.exe"}, true},
        {"d/wine", {"C:\\Program Files\\editor.exe"}, true},
        {"e/myeditor.exe", {"/usr/bin/myeditor.exe"}, false},
        {"f/editor.exe.bak", {"editor.exe.bak"}, false},
        {"g/viewer", {"viewer", "editor.exe"}, false},
        {"h/a) editor.exe", {"other"}, false},
    };
    for (const auto& [file, arguments, seen] : cases) {
        SCOPED_TRACE(file);
        ASSERT_TRUE(eventually([] { return !isEditorRunning(); })) << "another editor runs on this machine";
        fs::remove(report_);
        ASSERT_EQ(spawnDetached(arguments, "", copyOfChild(file)), 0);
        ASSERT_TRUE(eventually([&] { return fs::exists(report_); }));
        EXPECT_TRUE(eventually([&] { return isEditorRunning() == seen; }, std::chrono::seconds(seen ? 0 : 20)));
        letGo();
        ASSERT_TRUE(eventually(hasNoChildren));
        fs::remove(folder_ / "until");
    }
}

TEST_F(Processes, DeadEditorThatNobodyReapedDoesNotCount) {
    letGo();
    const SpawnResult dead = spawnProgram({copyOfChild("editor.exe")}, STDERR_FILENO);
    ASSERT_EQ(dead.error, 0);
    ASSERT_TRUE(eventually([&] { return isZombie(dead.process); }));
    EXPECT_TRUE(eventually([] { return !isEditorRunning(); }));
    EXPECT_TRUE(isZombie(dead.process));
    ::waitpid(dead.process, nullptr, 0);
}

TEST_F(Processes, EditorStartsCleanWithItsArgumentAsItIs) {
    letGo();
    const std::string argument = "--a  b\t\"c\"\n'd' $(touch x); `y` & | > \\\\ \xC3\xBC\\" + std::string(3000, 'p');
    const fs::path editor = "My Edit\xC3\xB6r \"1\"/editor.exe"; // found from here, not from the directory to work in
    copyOfChild(editor);
    fs::create_directory(folder_ / "work");
    const fs::path before = fs::current_path();
    fs::current_path(folder_.path());
    const int leak = ::open("/dev/zero", O_RDONLY); // without O_CLOEXEC
    ASSERT_EQ(::dup2(leak, 200), 200);
    sigset_t blocked;
    sigset_t old;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGTERM);
    ::pthread_sigmask(SIG_BLOCK, &blocked, &old);
    auto* const pipeHandler = std::signal(SIGPIPE, SIG_IGN);

    const bool launched = launchEditorProcess(editor.string(), argument, (folder_ / "work").string(), errorText_);

    std::signal(SIGPIPE, pipeHandler);
    ::pthread_sigmask(SIG_SETMASK, &old, nullptr);
    ::close(leak);
    ::close(200);
    fs::current_path(before);
    ASSERT_TRUE(launched) << errorText_;
    ASSERT_TRUE(eventually([&] { return fs::exists(report_); }));
    const auto report = readReport(report_);
    EXPECT_EQ(report.at("count"), "1");
    EXPECT_EQ(report.at("argument"), argument);
    EXPECT_EQ(report.at("directory"), (folder_ / "work").string());
    EXPECT_EQ(report.at("descriptors"), "0:/dev/null 1:/dev/null 2:/dev/null ");
    EXPECT_EQ(report.at("SigBlk"), "0000000000000000");
    // The C library ignores two signals of its own, 32 and 33, in what it spawns.
    EXPECT_EQ(std::stoull(report.at("SigIgn"), nullptr, 16) & ~0x180000000ull, 0u);
    EXPECT_EQ(report.at("session"), report.at("process")) << "a hang-up of the launcher's session would end it";
}

TEST_F(Processes, FailedStartTellsTheSystemsNumber) {
    const std::string editor = copyOfChild("editor.exe");
    const std::string plain = folder_.write("plain.exe", "#!/bin/sh\n").string();
    const struct {
        std::string executable, directory, text;
    } cases[] = {
        {"", "", "No executable was provided."},
        {(folder_ / "missing.exe").string(), "", "Starting the editor process failed (error 2)."},
        {plain, "", "Starting the editor process failed (error 13)."},
        {folder_.string(), "", "Starting the editor process failed (error 13)."},
        {editor, (folder_ / "missing").string(), "Starting the editor process failed (error 2)."},
    };
    for (const auto& [executable, directory, text] : cases) {
        errorText_.clear();
        EXPECT_FALSE(launchEditorProcess(executable, "p", directory, errorText_)) << executable;
        EXPECT_EQ(errorText_, text);
    }
}

TEST_F(Processes, TwoHundredStartsLeaveNothingBehind) {
    letGo();
    const std::string editor = copyOfChild("editor.exe");
    ASSERT_TRUE(launchEditorProcess(editor, "p", "", errorText_))
        << errorText_; // sanitizers keep a thread from the first
    ASSERT_TRUE(eventually(hasNoChildren));
    const std::ptrdiff_t descriptors = entryCount("/proc/self/fd");
    const std::ptrdiff_t threads = entryCount("/proc/self/task");
    for (int i = 0; i < 200; ++i)
        ASSERT_TRUE(launchEditorProcess(editor, "p", "", errorText_)) << errorText_;
    EXPECT_TRUE(eventually(hasNoChildren)) << "a zombie is left";
    EXPECT_TRUE(eventually([&] { return entryCount("/proc/self/task") <= threads; }));
    EXPECT_EQ(entryCount("/proc/self/fd"), descriptors);
}

// --- the guard -----------------------------------------------------------------------------------------------------

// Instances that print W or L into one pipe.
class Guards : public Processes {
  protected:
    Guards() { EXPECT_EQ(::pipe2(pipe_, O_CLOEXEC), 0); }
    ~Guards() override {
        ::close(pipe_[0]);
        ::close(pipe_[1]);
    }
    pid_t start(const std::vector<std::string>& arguments) {
        std::vector<std::string> all = {kChild};
        all.insert(all.end(), arguments.begin(), arguments.end());
        return spawnProgram(all, pipe_[1]).process;
    }
    std::string answers(std::size_t count) {
        std::string text(count, '?');
        for (char& answer : text)
            EXPECT_EQ(::read(pipe_[0], &answer, 1), 1);
        return text;
    }
    std::string startOne() {
        others_.push_back(start({"--guard"}));
        return answers(1);
    }
    void TearDown() override {
        letGo();
        for (const pid_t process : others_)
            ::waitpid(process, nullptr, 0);
        Processes::TearDown();
    }

    int pipe_[2] = {-1, -1};
    std::vector<pid_t> others_;
};

TEST_F(Guards, OfTwentyParallelStartsOneWins) {
    for (int i = 0; i < 20; ++i)
        others_.push_back(start({"--guard"}));
    const std::string text = answers(20);
    EXPECT_EQ(std::count(text.begin(), text.end(), 'W'), 1) << text;
    EXPECT_EQ(std::count(text.begin(), text.end(), 'L'), 19) << text;

    struct stat lock {};
    ASSERT_EQ(::stat((folder_ / "VoloLauncherSingleInstanceMutex").c_str(), &lock), 0);
    EXPECT_EQ(lock.st_mode & 0777, 0600u);
}

TEST_F(Guards, KilledInstanceFreesTheGuard) {
    const pid_t first = start({"--guard"});
    ASSERT_EQ(answers(1), "W");
    EXPECT_EQ(startOne(), "L");
    ::kill(first, SIGKILL);
    ::waitpid(first, nullptr, 0);
    EXPECT_EQ(startOne(), "W");
}

TEST_F(Guards, EditorOutlivesTheLauncherAndDoesNotKeepItsGuard) {
    const pid_t launcher = start({"--launcher", copyOfChild("editor.exe")});
    ASSERT_EQ(answers(1), "W");
    int status = -1;
    ::waitpid(launcher, &status, 0);
    ASSERT_EQ(status, 0);
    ASSERT_TRUE(eventually([&] { return fs::exists(report_); }));
    EXPECT_EQ(readReport(report_).at("count"), "0") << "an empty argument is no argument";
    const pid_t editor = std::stoi(readReport(report_).at("process"));
    EXPECT_EQ(startOne(), "W");
    EXPECT_EQ(::kill(editor, 0), 0) << "the editor died with the launcher";
    letGo();
    EXPECT_TRUE(eventually([&] { return ::kill(editor, 0) != 0 || isZombie(editor); })); // its new parent reaps it
}

TEST_F(Guards, ReleaseLetsTheNextOneIn) {
    SingleInstanceGuard guard;
    ASSERT_FALSE(guard.anotherInstanceRuns());
    EXPECT_EQ(startOne(), "L");
    guard.release();
    EXPECT_EQ(startOne(), "W");
}

TEST_F(Guards, GuardThatCannotBeMadeStopsNobody) {
    const std::string target = folder_.write("precious", "kept").string();
    fs::create_symlink(target, folder_ / "VoloLauncherSingleInstanceMutex");
    ScopedEnvironment noApplicationData("APPDATA");
    ScopedEnvironment noConfig("XDG_CONFIG_HOME");
    ScopedEnvironment noHome("HOME");
    EXPECT_FALSE(SingleInstanceGuard().anotherInstanceRuns());
    EXPECT_EQ(startOne(), "W");
    EXPECT_EQ(startOne(), "W") << "a link to elsewhere was followed";
}

TEST_F(Guards, WithoutRuntimeDirectoryTheGuardLiesWithTheUsersData) {
    ScopedEnvironment noRuntime("XDG_RUNTIME_DIR");
    ScopedEnvironment applicationData("APPDATA", folder_.string());
    EXPECT_EQ(startOne(), "W");
    EXPECT_EQ(startOne(), "L");
    EXPECT_TRUE(fs::exists(folder_ / "ZANTOR/VoloLauncherSingleInstanceMutex"));
}

} // namespace
