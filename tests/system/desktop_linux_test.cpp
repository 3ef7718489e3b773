// Directories, dialogs and the desktop's opener, against programs of the test's own on PATH.

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <limits>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "support/eventually.h"
#include "support/scoped_environment.h"
#include "support/temporary_folder.h"
#include "system/local_time.h"
#include "system/operating_system.h"

namespace {

namespace fs = std::filesystem;

// PATH holds nothing but shell scripts of the test. Each writes its own name and its arguments down first.
class Desktop : public testing::Test {
  protected:
    void program(const std::string& name, const std::string& then) {
        const fs::path file = folder_.write("bin/" + name, "#!/bin/sh\nprintf '%s\\0' " + name +
                                                               " \"$@\" >> \"$RECORD\"\n" + then + "\n");
        fs::permissions(file, fs::perms::owner_all);
    }
    // Everything that was run, each text ended by "|".
    std::string record() const {
        std::string texts = readFileBytes(folder_ / "record");
        std::replace(texts.begin(), texts.end(), '\0', '|');
        return texts;
    }

    TemporaryFolder folder_;
    ScopedEnvironment path_{"PATH", (folder_ / "bin").string()};
    ScopedEnvironment recordTo_{"RECORD", (folder_ / "record").string()};
};

TEST_F(Desktop, DialogGivesTheChoiceAndNothingElse) {
    const std::pair<const char*, const char*> cases[] = {
        {"printf '/a b/\303\274 \"x\"\\n'", "/a b/\xC3\xBC \"x\""},
        {"printf '/ends in one\\n\\n'", "/ends in one\n"},
        {"printf '/no line feed'", "/no line feed"},
        {"printf '/tmp\\n'; exit 1", ""},
        {"kill -9 $$", ""},
        {"echo noise >&2; echo /chosen", "/chosen"},
        {"[ -e /proc/$$/fd/77 ] && echo leaked", ""},
    };
    const int leak = ::open("/dev/null", O_RDONLY);
    ASSERT_EQ(::dup2(leak, 77), 77);
    for (const auto& [script, choice] : cases) {
        program("zenity", script);
        EXPECT_EQ(browseForFolder("T", "/s"), choice) << script;
        EXPECT_EQ(pickProjectFile("T", "/s"), choice) << script;
    }
    ::close(77);
    ::close(leak);
}

TEST_F(Desktop, DialogProgramGetsTitleAndStartAsTheyAre) {
    EXPECT_EQ(browseForFolder("T", "/s"), "") << "no dialog program is a cancel";
    program("kdialog", "echo /k");
    EXPECT_EQ(browseForFolder("Pick a \"folder\"; $(x)", "/a b"), "/k");
    EXPECT_EQ(pickProjectFile("Add", "/a b/p.zantorproj"), "/k");
    program("zenity", "echo /z");
    fs::create_directory(folder_ / "a b");
    const std::string folder = (folder_ / "a b").string();
    EXPECT_EQ(browseForFolder("Pick", folder), "/z") << "zenity comes first";
    EXPECT_EQ(pickProjectFile("Add", folder), "/z");
    EXPECT_EQ(pickProjectFile("Add", "/a b/p.zantorproj"), "/z");
    EXPECT_EQ(browseForFolder("Pick", ""), "/z");
    const std::string asked =
        "zenity|--file-selection|--title=Add|--file-filter=VOLO Project (*.zantorproj) | *.zantorproj|";
    EXPECT_EQ(record(), "kdialog|--title|Pick a \"folder\"; $(x)|--getexistingdirectory|/a b|"
                        "kdialog|--title|Add|--getopenfilename|/a b/p.zantorproj|VOLO Project (*.zantorproj)|"
                        "zenity|--file-selection|--directory|--title=Pick|--filename=" +
                            folder + "/|" + asked + "--filename=" + folder + "/|" + asked +
                            "--filename=/a b/p.zantorproj|"
                            "zenity|--file-selection|--directory|--title=Pick|");
}

TEST_F(Desktop, OpenerGetsOneTargetAndEmptyTextsOpenNothing) {
    program("xdg-open", "");
    openUrlInBrowser("");
    openInFileManager("");
    openUrlInBrowser("https://a.example/?q=1&r=$(x) y");
    const std::string opened = "xdg-open|https://a.example/?q=1&r=$(x) y|";
    ASSERT_TRUE(eventually([&] { return record() == opened; })) << record();
    const std::string missing = (folder_ / "new/folder").string();
    openInFileManager(missing);
    EXPECT_TRUE(fs::is_directory(missing));
    EXPECT_TRUE(eventually([&] { return record() == opened + "xdg-open|" + missing + "|"; })) << record();
}

TEST_F(Desktop, DirectoriesFollowTheEnvironment) {
    const std::string home = folder_.string();
    folder_.write("conf/user-dirs.dirs",
                  "# comment\nXDG_DOWNLOAD_DIR=\"/no\"\n XDG_DOCUMENTS_DIR = \"$HOME/My \\\"D\\\"\"\n");
    folder_.write("absolute/user-dirs.dirs", "XDG_DOCUMENTS_DIR=\"/mnt/\xC3\xBC docs\"\n");
    folder_.write("bad/user-dirs.dirs",
                  "XDG_DOCUMENTS_DIR=\"relative\"\nXDG_DOCUMENTS_DIR=/unquoted\nXDG_DOCUMENTS_DIRX=\"/x\"\n");
    using Value = std::optional<std::string>;
    const Value none;
    const struct {
        Value applicationData, profile, configHome, home;
        std::string data, documents;
    } cases[] = {
        {home + "/app data", home + "/me", home + "/conf", home, home + "/app data/ZANTOR", home + "/me/Documents"},
        {none, none, home + "/conf", home, home + "/conf/ZANTOR", home + "/My \"D\""},
        {none, none, home + "/absolute", home, home + "/absolute/ZANTOR", "/mnt/\xC3\xBC docs"},
        {none, none, home + "/bad", home, home + "/bad/ZANTOR", home + "/Documents"},
        {none, none, "relative", home, home + "/.config/ZANTOR", home + "/Documents"},
        {"", "", "", home + "/h", home + "/h/.config/ZANTOR", home + "/h/Documents"},
        {none, none, none, none, "", ""},
    };
    for (const auto& row : cases) {
        const ScopedEnvironment a("APPDATA", row.applicationData), b("USERPROFILE", row.profile);
        const ScopedEnvironment c("XDG_CONFIG_HOME", row.configHome), d("HOME", row.home);
        EXPECT_EQ(userDataDirectory(), row.data);
        EXPECT_EQ(userDocumentsDirectory(), row.documents);
        if (row.data.empty()) continue;
        struct stat status {};
        ASSERT_EQ(::stat(row.data.c_str(), &status), 0) << row.data;
        EXPECT_EQ(status.st_mode & 0777, 0700u) << row.data;
    }
    folder_.write("file", "in the way");
    const ScopedEnvironment blocked("APPDATA", home + "/file");
    EXPECT_EQ(userDataDirectory(), home + "/file/ZANTOR") << "the text comes back though nothing could be created";
}

TEST_F(Desktop, TimesAreToldInTheZoneOfTheComputer) {
    const fs::path file = folder_.write("file", "x");
    const auto written = std::chrono::sys_seconds(std::chrono::seconds(1795253400)); // 2026-11-21 09:30 UTC
    fs::last_write_time(file, std::chrono::file_clock::from_sys(written));
    const ScopedEnvironment zone("TZ", "XYZ-5:30");
    ::tzset();
    EXPECT_EQ(formatLocalTime(1795253400), "2026-11-21 15:00");
    EXPECT_EQ(fileModifiedTimeText(file.string()), "2026-11-21 15:00");
    EXPECT_EQ(formatLocalTime(1), "1970-01-01 05:30");
    for (const std::int64_t none : {std::int64_t{0}, std::int64_t{-1}, std::numeric_limits<std::int64_t>::max()}) {
        EXPECT_EQ(formatLocalTime(none), "") << none;
    }
    EXPECT_EQ(fileModifiedTimeText((folder_ / "missing").string()), "");
}

} // namespace
