#include "config/launcher_settings.h"

#include <random>

#include <gtest/gtest.h>

#include "config/settings_text.h"
#include "support/platform.h"
#include "support/scoped_environment.h"
#include "support/temporary_folder.h"

namespace {

namespace fs = std::filesystem;

class Settings : public testing::Test {
  protected:
    LauncherSettings loaded(const std::string& text) const {
        folder_.write("ZANTOR/Launcher.conf", text);
        LauncherSettings settings;
        EXPECT_TRUE(settings.load());
        return settings;
    }
    std::string onDisk() const { return readFileBytes(file_); }

    TemporaryFolder folder_;
    ScopedEnvironment applicationData_{"APPDATA", folder_.string()};
    fs::path file_ = folder_ / "ZANTOR/Launcher.conf";
    fs::path temporary_ = folder_ / "ZANTOR/Launcher.conf.tmp";
};

TEST_F(Settings, FileIsWrittenInThePromisedForm) {
    LauncherSettings settings;
    EXPECT_FALSE(settings.load());
    settings.setRefreshToken("1//to=ken=");
    settings.setUserName("A % B");
    settings.setUserEmail("");
    settings.setDefaultLocation("/home/a b/\xC3\xBC");
    settings.setProjects({{"50%", "/p/a@b.zantorproj", "Quest", "1.2", 1795253400, true}, {"b\nc", "", "", "", -5}});
    ASSERT_TRUE(settings.save());
    EXPECT_EQ(onDisk(), asTextFile("[General]\n"
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
}

TEST_F(Settings, GeneralKeysAreReadAsTold) {
    const struct {
        std::string text, token;
    } cases[] = {
        {"[General]\nauth/refreshToken=t", "t"},
        {"[General]\r\nauth%2frefreshToken = \t t \r\n", "t"},
        {"  [General]\t\n  auth/refreshToken=t\n", "t"},
        {"[General]\nauth/refreshToken=a\nauth/refreshToken=b\n", "b"},
        {"[General]\nauth/refreshToken=a=b==\n", "a=b=="},
        {"[General]\nauth/refreshToken=%\n", "%"},
        {"[General]\nauth/refreshToken=%zz%4g%g4%%41\n", "%zz%4g%g4%A"},
        {"[General]\nauth/refreshToken=%20 t %09\n", "  t \t"},
        {"[General]\nauth/refreshToken=%2541\n", "%41"},
        {"[General]\n#auth/refreshToken=t\n ;auth/refreshToken=t\n", ""},
        {"auth/refreshToken=t\n[General]\n", ""},
        {"[General]\n[Other]\nauth/refreshToken=t\n", ""},
        {"[general]\nauth/refreshToken=t\n", ""},
        {"[General] x\nauth/refreshToken=t\n", ""},
        {"[General]\n[x\nauth/refreshToken=t\n", "t"},
        {"[General]\nauth/refreshToken\n=t\n", ""},
        {std::string("[General]\nauth/refreshToken=a\0b\n", 33), std::string("a\0b", 3)},
        {"\xEF\xBB\xBF[General]\nauth/refreshToken=t\n", ""},
    };
    for (const auto& [text, token] : cases)
        EXPECT_EQ(loaded(text).refreshToken(), token) << text;
}

TEST_F(Settings, ProjectLinesAreReadAsTold) {
    const ProjectEntry unnamed;
    const auto named = [](const char* name, std::int64_t opened = 0, bool favorite = false) {
        return ProjectEntry{name, "", "", "", opened, favorite};
    };
    const struct {
        const char* text;
        std::vector<ProjectEntry> projects;
    } cases[] = {
        {"Projects\\size=1\nProjects\\1\\name=a", {named("a")}},
        {"Projects\\1\\name=a\n[Other]\nProjects\\size=1", {named("a")}},
        {"Projects\\1\\name=a", {}},
        {"Projects\\size=-2\nProjects\\1\\name=a", {}},
        {"Projects\\size=x\nProjects\\1\\name=a", {}},
        {"Projects\\size=2\nProjects\\size=1\nProjects\\1\\name=a", {named("a")}},
        {"Projects\\size=2\nProjects\\3\\name=c\nProjects\\0\\name=z\nProjects\\-1\\name=n", {unnamed, unnamed}},
        {"Projects\\size=3\nProjects\\1\\name=a\nProjects\\3\\name=c", {named("a"), unnamed, named("c")}},
        {"Projects\\size=1\n#Projects\\1\\name=a\n;Projects\\1\\name=b", {unnamed}},
        {"Projects\\size=1\nProjects\\1name=a\nProjects\\name=b\nProjects\\=c\nprojects\\1\\name=d", {unnamed}},
        {"Projects\\size=1\nProjects\\1\\Name=a\nProjects\\1\\x\\name=b\nProjects\\1\\=c", {unnamed}},
        {"Projects%5Csize = 1 \r\n Projects%5C1%5Cname = a%40 \r\n", {named("a@")}},
        {"Projects\\size=1\nProjects\\1\\favorite=1", {named("", 0, true)}},
        {"Projects\\size=1\nProjects\\1\\favorite=true", {named("", 0, true)}},
        {"Projects\\size=1\nProjects\\1\\favorite=TRUE", {unnamed}},
        {"Projects\\size=1\nProjects\\1\\favorite=true\nProjects\\1\\favorite=0", {unnamed}},
        {"Projects\\size=1\nProjects\\1\\lastOpened=abc", {unnamed}},
        {"Projects\\size=1\nProjects\\1\\lastOpened=-12x", {named("", -12)}},
        {"Projects\\size=1\nProjects\\1\\lastOpened=9007199254740993", {named("", 9007199254740993)}},
        {"Projects\\size=4\nProjects\\1\\name=a\nProjects\\2\\name=b\nProjects\\2\\lastOpened=5\nProjects\\3\\name=c\n"
         "Projects\\3\\lastOpened=5\nProjects\\4\\name=d\nProjects\\4\\lastOpened=9",
         {named("d", 9), named("b", 5), named("c", 5), named("a")}},
    };
    for (const auto& [text, projects] : cases)
        EXPECT_EQ(loaded(text).projects(), projects) << text;
}

TEST_F(Settings, WhatIsSavedComesBack) {
    std::mt19937 random(20261121);
    const auto bytes = [&] {
        std::string text;
        for (std::size_t length = random() % 40; length > 0; --length) {
            text += random() % 3 == 0 ? "%=@\\/\n #;[]%41"[random() % 14] : static_cast<char>(random());
        }
        return std::string(trimSettingText(text)); // blanks at the ends are the one thing that the format loses
    };
    LauncherSettings saved;
    for (int round = 0; round < 300; ++round) {
        saved.setRefreshToken(bytes());
        saved.setUserName(bytes());
        saved.setUserEmail(bytes());
        saved.setInstallPath(bytes());
        saved.setDefaultLocation(bytes());
        saved.setLastAddedLocation(bytes());
        std::vector<ProjectEntry> projects(random() % 4);
        auto opened = static_cast<std::int64_t>(random());
        for (ProjectEntry& project : projects) {
            project = {bytes(), bytes(), bytes(), bytes(), opened, random() % 2 == 0};
            opened -= random() % 2; // newest first, as a loaded list is
        }
        saved.setProjects(projects);
        ASSERT_TRUE(saved.save());
        LauncherSettings read;
        ASSERT_TRUE(read.load());
        const auto texts = [](const LauncherSettings& of) {
            return std::vector{of.refreshToken(), of.userName(),        of.userEmail(),
                               of.installPath(),  of.defaultLocation(), of.lastAddedLocation()};
        };
        ASSERT_EQ(texts(read), texts(saved));
        ASSERT_EQ(read.projects(), projects);
    }
}

TEST_F(Settings, DamagedFileNeverStopsTheLauncher) {
    std::mt19937 random(7);
    std::string noise;
    for (int i = 0; i < 200000; ++i)
        noise += static_cast<char>(random());
    std::string longLines;
    for (int i = 0; i < 10; ++i)
        longLines += "Projects\\1\\name=" + std::string(1 << 20, '%') + "\n";
    EXPECT_TRUE(loaded(noise).projects().empty());
    EXPECT_TRUE(loaded("[General]\nProjects\\size=1\nauth/refreshToken=t\n" + longLines + noise).refreshToken() == "t");
    EXPECT_EQ(loaded("Projects\\size=10000\n" + longLines).projects().size(), 10000u);
    EXPECT_TRUE(loaded(std::string(10 << 20, '=')).projects().empty());
    EXPECT_TRUE(loaded(std::string(10 << 20, '\n')).projects().empty());

    fs::remove(file_);
    fs::create_directory(file_);
    LauncherSettings settings;
    (void)settings.load();
    EXPECT_EQ(settings.refreshToken(), "");
    EXPECT_FALSE(settings.save());
}

TEST_F(Settings, FileIsTheOwnersAloneAlsoOverAWiderLeftover) {
    folder_.write("ZANTOR/Launcher.conf", "[General]\n");
    folder_.write("ZANTOR/Launcher.conf.tmp", std::string(100000, 'x'));
    for (const fs::path& file : {file_, temporary_})
        fs::permissions(file, fs::perms(0666));
    LauncherSettings settings;
    settings.setRefreshToken("t");
    ASSERT_TRUE(settings.save());
    if (!kOnWindows) {
        EXPECT_EQ(fs::status(file_).permissions(), fs::perms(0600));
    }
    EXPECT_FALSE(fs::exists(temporary_));
    EXPECT_EQ(onDisk().find('x'), std::string::npos);

    fs::remove_all(folder_ / "ZANTOR");
    EXPECT_TRUE(settings.save()) << "a folder that has vanished is made again";
    if (!kOnWindows) {
        EXPECT_EQ(fs::status(folder_ / "ZANTOR").permissions(), fs::perms(0700));
    }
}

} // namespace
