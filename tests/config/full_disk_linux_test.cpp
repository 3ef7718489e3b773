#include <csignal>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>
#include <sys/resource.h>

#include "config/launcher_settings.h"
#include "support/scoped_environment.h"
#include "support/temporary_folder.h"

// A limit on the size of files stops a write half-way, as a full disk does.
TEST(SettingsOnAFullDisk, OldFileStaysWhole) {
    const TemporaryFolder folder;
    const ScopedEnvironment applicationData("APPDATA", folder.string());
    const std::filesystem::path file = folder.write("ZANTOR/Launcher.conf", "old");
    LauncherSettings settings;
    settings.setRefreshToken(std::string(10000, 'n'));
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const rlimit small{4096, before.rlim_max};
    std::signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
    EXPECT_FALSE(settings.save());
    ::setrlimit(RLIMIT_FSIZE, &before);
    EXPECT_EQ(readFileBytes(file), "old");
    EXPECT_TRUE(settings.save());
}
