#include <csignal>

#include <gtest/gtest.h>
#include <sys/resource.h>

#include "config/launcher_settings.h"
#include "support/scoped_environment.h"
#include "support/temporary_folder.h"

namespace {

// A limit on the size of files fails a write half-way, as a full disk does.
TEST(SettingsOnAFullDisk, OldFileStaysWhole) {
    const TemporaryFolder folder;
    const ScopedEnvironment applicationData("APPDATA", folder.string());
    const std::string old = "[General]\nauth%2FrefreshToken=old\n";
    const std::filesystem::path file = folder.write("ZANTOR/Launcher.conf", old);
    LauncherSettings settings;
    settings.setRefreshToken(std::string(10000, 'n'));

    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const rlimit small{4096, before.rlim_max};
    auto* const handler = std::signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
    const bool saved = settings.save();
    ::setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);

    EXPECT_FALSE(saved);
    EXPECT_EQ(readFileBytes(file), old);
    EXPECT_EQ(std::filesystem::status(folder / "ZANTOR/Launcher.conf.tmp").permissions(), std::filesystem::perms(0600));
    EXPECT_TRUE(settings.save());
}

} // namespace
