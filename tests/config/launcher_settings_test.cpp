#include "config/launcher_settings.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/platform.h"
#include "support/scoped_environment.h"
#include "support/temporary_folder.h"

namespace {

namespace fs = std::filesystem;

class Settings : public testing::Test {
  protected:
    [[nodiscard]] LauncherSettings loaded(const std::string& text) const {
        folder_.write("ZANTOR/Launcher.conf", text);
        LauncherSettings settings;
        EXPECT_TRUE(settings.load());
        return settings;
    }

    TemporaryFolder folder_;
    ScopedEnvironment applicationData_{"APPDATA", folder_.string()};
    fs::path file_ = folder_ / "ZANTOR/Launcher.conf";
};

TEST_F(Settings, FileHasTheDocumentedForm) {
    LauncherSettings settings;
    EXPECT_FALSE(settings.load());
    settings.setRefreshToken("1//to=ken=");
    settings.setUserName("A % B");
    settings.setDefaultLocation("/home/a b/\xC3\xBC");
    settings.setProjects({{"50%", "/p/a@b.zantorproj", "Quest", "1.2", 1795253400, true}, {"b\nc", "", "", "", -5}});
    ASSERT_TRUE(settings.save());
    EXPECT_EQ(readFileBytes(file_), asTextFile("[General]\n"
                                               "auth%2FrefreshToken=1//to=ken=\n"
                                               "auth%2FuserName=A %25 B\n"
                                               "install%2Fpath=\n"
                                               "projects%2FdefaultLocation=/home/a b/\xC3\xBC\n"
                                               "projects%2FlastAddedLocation=\n"
                                               "Projects%5Csize=2\n"
                                               "Projects%5C1%5Cname=50%25\n"
                                               "Projects%5C1%5Cpath=/p/a%40b.zantorproj\n"
                                               "Projects%5C1%5ClastOpened=1795253400\n"
                                               "Projects%5C1%5Cfavorite=true\n"
                                               "Projects%5C1%5CtargetPlatform=Quest\n"
                                               "Projects%5C1%5CeditorVersion=1.2\n"
                                               "Projects%5C2%5Cname=b%0Ac\n"
                                               "Projects%5C2%5Cpath=\n"
                                               "Projects%5C2%5ClastOpened=-5\n"
                                               "Projects%5C2%5Cfavorite=false\n"));
    LauncherSettings read;
    ASSERT_TRUE(read.load());
    EXPECT_EQ(read.projects(), settings.projects());
    EXPECT_EQ(read.refreshToken(), settings.refreshToken());
}

TEST_F(Settings, GeneralKeysCountInTheirSectionOnly) {
    const struct {
        std::string text, token;
    } cases[] = {
        {"  [General]\t\r\nauth%2frefreshToken = \t t \r\n", "t"},
        {"[General]\nauth/refreshToken=a\nauth/refreshToken=b\n", "b"},
        {"[General]\nauth/refreshToken=%zz%4g%g4%2541%4\n", "%zz%4g%g4%41%4"},
        {"[General]\nauth/refreshToken=%20 t %09\n", "  t \t"},
        {"[General]\n#auth/refreshToken=t\n ;auth/refreshToken=t\n", ""},
        {"auth/refreshToken=t\n[General]\n[general]\nauth/refreshToken=t\n", ""},
        {"[General]\n[x\nauth/refreshToken=t\n", "t"},
        {std::string("[General]\nauth/refreshToken=a\0b\n", 33), std::string("a\0b", 3)},
    };
    for (const auto& [text, token] : cases)
        EXPECT_EQ(loaded(text).refreshToken(), token) << text;
}

TEST_F(Settings, ProjectLinesCountInAnySectionAndNewestComesFirst) {
    const ProjectEntry unnamed;
    const auto named = [](const char* name, std::int64_t opened = 0, bool favorite = false) {
        return ProjectEntry{name, "", "", "", opened, favorite};
    };
    const struct {
        const char* text;
        std::vector<ProjectEntry> projects;
    } cases[] = {
        {"Projects\\1\\name=a\n[Other]\nProjects%5Csize = 1\r\n", {named("a")}},
        {"Projects\\size=-2\nProjects\\1\\name=a", {}},
        {"Projects\\size=2\nProjects\\size=1\nProjects\\1\\name=a", {named("a")}},
        {"Projects\\size=2\nProjects\\3\\name=c\nProjects\\0\\name=z\nProjects\\-1\\name=n", {unnamed, unnamed}},
        {"Projects\\size=1\nProjects\\1name=a\nprojects\\1\\name=d\n;Projects\\1\\name=b", {unnamed}},
        {"Projects\\size=2\nProjects\\1\\favorite=1\nProjects\\2\\favorite=TRUE", {named("", 0, true), unnamed}},
        {"Projects\\size=1\nProjects\\1\\favorite=true\nProjects\\1\\lastOpened=-12x", {named("", -12, true)}},
        {"Projects\\size=3\nProjects\\1\\name=a\nProjects\\2\\name=b\nProjects\\3\\name=c\nProjects\\3\\lastOpened=5",
         {named("c", 5), named("a"), named("b")}},
    };
    for (const auto& [text, projects] : cases)
        EXPECT_EQ(loaded(text).projects(), projects) << text;
}

// The test uses a directory as the unreadable file, because the superuser can read a file without read permission.
TEST_F(Settings, FirstSaveKeepsAnUnreadableFileUnderAnotherName) {
    folder_.write("ZANTOR/Launcher.conf.unreadable", "older");
    folder_.write("ZANTOR/Launcher.conf/inside", "kept");
    LauncherSettings settings;
    EXPECT_FALSE(settings.load());
    EXPECT_TRUE(settings.save() && settings.save() && settings.load());
    EXPECT_EQ(readFileBytes(folder_ / "ZANTOR/Launcher.conf.unreadable"), "older");
    EXPECT_EQ(readFileBytes(folder_ / "ZANTOR/Launcher.conf.unreadable-2/inside"), "kept");
}

TEST_F(Settings, OnlyTheOwnerMayReadTheFileEvenOverAWiderLeftover) {
    folder_.write("ZANTOR/Launcher.conf.tmp", std::string(100000, 'x'));
    fs::permissions(folder_ / "ZANTOR/Launcher.conf.tmp", fs::perms(0666));
    LauncherSettings settings;
    ASSERT_TRUE(settings.save());
    EXPECT_FALSE(fs::exists(folder_ / "ZANTOR/Launcher.conf.tmp"));
    EXPECT_EQ(readFileBytes(file_).find('x'), std::string::npos);
    if (kOnWindows) return;
    EXPECT_EQ(fs::status(file_).permissions(), fs::perms(0600));
    fs::remove_all(folder_ / "ZANTOR");
    EXPECT_TRUE(settings.save()) << "a removed folder is created again";
    EXPECT_EQ(fs::status(folder_ / "ZANTOR").permissions(), fs::perms(0700));
}

} // namespace
