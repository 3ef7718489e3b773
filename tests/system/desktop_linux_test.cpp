// Tests directories, dialogs and the desktop's opener. The only programs on PATH are scripts of the test.

#include <chrono>
#include <cstdint>
#include <ctime>
#include <filesystem>
#include <limits>
#include <optional>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "support/eventually.h"
#include "support/scoped_environment.h"
#include "support/temporary_folder.h"
#include "system/dialog_problem.h"
#include "system/local_time.h"
#include "system/operating_system.h"

namespace {

namespace fs = std::filesystem;

class Desktop : public testing::Test {
  protected:
    // Creates a program that records its name and arguments, then runs a shell command.
    void program(const std::string& name, const std::string& then) {
        const fs::path file = folder_.write("bin/" + name, "#!/bin/sh\nprintf '%s|' " + name + " \"$@\" >> '" +
                                                               (folder_ / "record").string() + "'\n" + then + "\n");
        fs::permissions(file, fs::perms::owner_all);
    }
    // Returns the names and arguments of all programs that ran.
    [[nodiscard]] std::string record() const { return readFileBytes(folder_ / "record"); }

    TemporaryFolder folder_;
    ScopedEnvironment path_{"PATH", (folder_ / "bin").string()};
    ScopedEnvironment noBus_{"DBUS_SESSION_BUS_ADDRESS", "unix:path=/none"}; // the user's portal must not be asked
};

TEST_F(Desktop, DialogGivesTheChoiceOrNothing) {
    const std::pair<const char*, const char*> cases[] = {
        {"echo noise >&2; printf '/a b/\303\274 \"x\"\\n'", "/a b/\xC3\xBC \"x\""},
        {"printf '/ends in one\\n\\n'", "/ends in one\n"},
        {"printf '/tmp\\n'; exit 1", ""},
    };
    for (const auto& [script, choice] : cases) {
        program("zenity", script);
        EXPECT_EQ(browseForFolder("T", "/s"), choice) << script;
    }
}

TEST_F(Desktop, DialogProgramGetsTitleAndStartUnchanged) {
    EXPECT_EQ(browseForFolder("T", "/s"), "");
    EXPECT_NE(takeDialogProblem(), "") << "the user must learn why no dialog opened";
    program("zenity", "echo /z; kill -9 $$");
    program("kdialog", "echo /k");
    EXPECT_EQ(browseForFolder("T", "/s"), "/k") << "a zenity that fails is no cancel";
    EXPECT_EQ(takeDialogProblem(), "");
    fs::remove(folder_ / "bin/zenity");
    fs::remove(folder_ / "record");
    EXPECT_EQ(browseForFolder("Pick a \"folder\"; $(x)", "/a b"), "/k");
    EXPECT_EQ(pickProjectFile("Add", "/a b/p.zantorproj"), "/k");
    program("zenity", "echo /z");
    const std::string folder = (folder_ / "bin").string();
    EXPECT_EQ(browseForFolder("Pick", folder), "/z") << "zenity comes first";
    EXPECT_EQ(pickProjectFile("Add", "/a b/p.zantorproj"), "/z");
    EXPECT_EQ(browseForFolder("Pick", ""), "/z");
    EXPECT_EQ(record(),
              "kdialog|--title|Pick a \"folder\"; $(x)|--getexistingdirectory|/a b|"
              "kdialog|--title|Add|--getopenfilename|/a b/p.zantorproj|VOLO Project (*.zantorproj)|"
              "zenity|--file-selection|--directory|--title=Pick|--filename=" +
                  folder +
                  "/|"
                  "zenity|--file-selection|--title=Add|--file-filter=VOLO Project (*.zantorproj) | *.zantorproj|"
                  "--filename=/a b/p.zantorproj|"
                  "zenity|--file-selection|--directory|--title=Pick|");
}

TEST_F(Desktop, OpenerGetsOneTargetAndEmptyTextsOpenNothing) {
    program("xdg-open", "");
    openUrlInBrowser("");
    openInFileManager("");
    const std::string missing = (folder_ / "new/folder").string();
    openInFileManager(missing);
    EXPECT_TRUE(fs::is_directory(missing));
    ASSERT_TRUE(eventually([&] { return !record().empty(); }));
    openUrlInBrowser("https://a.example/?q=1&r=$(x) y");
    EXPECT_TRUE(
        eventually([&] { return record() == "xdg-open|" + missing + "|xdg-open|https://a.example/?q=1&r=$(x) y|"; }));
}

TEST_F(Desktop, DirectoriesFollowTheEnvironment) {
    const std::string home = folder_.string();
    folder_.write("conf/user-dirs.dirs",
                  "# comment\nXDG_DOWNLOAD_DIR=\"/no\"\n XDG_DOCUMENTS_DIR = \"$HOME/My \\\"D\\\"\"\n");
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
        {none, none, home + "/bad", home, home + "/bad/ZANTOR", home + "/Documents"},
        {"", "", "relative", home, home + "/.config/ZANTOR", home + "/Documents"},
        {none, none, none, none, "", ""},
    };
    for (const auto& row : cases) {
        const ScopedEnvironment a("APPDATA", row.applicationData), b("USERPROFILE", row.profile);
        const ScopedEnvironment c("XDG_CONFIG_HOME", row.configHome), d("HOME", row.home);
        EXPECT_EQ(userDataDirectory(), row.data);
        EXPECT_EQ(userDocumentsDirectory(), row.documents);
        if (row.data.empty()) continue;
        EXPECT_EQ(fs::status(row.data).permissions(), fs::perms(0700)) << row.data;
    }
    folder_.write("file", "");
    const ScopedEnvironment blocked("APPDATA", home + "/file");
    EXPECT_EQ(userDataDirectory(), home + "/file/ZANTOR") << "the text is returned although the folder is not created";
}

TEST_F(Desktop, TimesAreInTheZoneOfTheComputer) {
    const fs::path file = folder_.write("file", "x");
    const auto written = std::chrono::sys_seconds(std::chrono::seconds(1795253400)); // 2026-11-21 09:30 UTC
    fs::last_write_time(file, std::chrono::file_clock::from_sys(written));
    const ScopedEnvironment zone("TZ", "XYZ-5:30");
    ::tzset();
    EXPECT_EQ(formatLocalTime(1795253400), "2026-11-21 15:00");
    EXPECT_EQ(fileModifiedTimeText(file.string()), "2026-11-21 15:00");
    EXPECT_EQ(fileModifiedTimeText((folder_ / "missing").string()), "");
    for (const std::int64_t none : {std::int64_t{0}, std::int64_t{-1}, std::numeric_limits<std::int64_t>::max()})
        EXPECT_EQ(formatLocalTime(none), "") << none;
}

} // namespace
