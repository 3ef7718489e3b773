// What only a POSIX system can show: modes of files, a full disk, directories that somebody may not change.
#ifndef _WIN32

#include <csignal>

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include "install/install_world.h"
#include "install/package_extraction.h"

namespace fs = std::filesystem;

static const std::string kArchive = makeZip({{"editor.exe", std::string(300000, 'n')}});

TEST(PackageExtraction, GivesFilesTheModesTheyHadOnUnixAndLetsEveryEditorStart) {
    std::vector<ZipEntry> entries = {
        unixEntry("tool", "x", 0100755),           unixEntry("secret", "x", 0100400),
        unixEntry("setuid", "x", 0104755),         unixEntry("none", "x", 0100000),
        unixEntry("typeless", "x", 0640),          unixEntry("link", "x", 0120777),
        unixEntry("open", "x", 0100666),           unixEntry("editor.exe", "x", 0100600),
        unixEntry("editor/editor.exe", "", 0),     {"bin/editor.exe", "made on another system"},
        unixEntry("lib/editor.exe", "x", 0100644),
    };
    entries.push_back(entries[0]);
    entries.back().name = "foreign";
    entries.back().madeBy = 20; // the same attributes mean nothing there
    const TemporaryFolder folder;
    const fs::path staging = folder / "staging";
    fs::create_directories(staging);
    ASSERT_EQ(extractArchive(folder.write("archive", makeZip(entries)).string(), staging.string(), false),
              ExtractionOutcome::Done);
    const std::pair<const char*, unsigned> want[] = {
        {"tool", 0755},    {"secret", 0600},         {"setuid", 0755},
        {"none", 0600},    {"typeless", 0640},       {"link", 0644},
        {"open", 0666},    {"editor.exe", 0711},     {"editor/editor.exe", 0755},
        {"foreign", 0644}, {"bin/editor.exe", 0755}, {"lib/editor.exe", 0644},
    };
    for (const auto& [name, mode] : want)
        EXPECT_EQ(static_cast<unsigned>(fs::status(staging / name).permissions()), mode) << name;
}

TEST(PackageDownload, AFullDiskFailsTheTransfer) {
    for (const std::size_t limit : {std::size_t{0}, std::size_t{4096}, kArchive.size() - 1}) {
        InstallWorld world;
        world.release("2", kArchive);
        rlimit before{};
        getrlimit(RLIMIT_FSIZE, &before);
        std::signal(SIGXFSZ, SIG_IGN); // a write past the limit then fails as on a full disk
        const rlimit full{limit, before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &full);
        const Outcome outcome = world.run();
        setrlimit(RLIMIT_FSIZE, &before);
        EXPECT_EQ(outcome, failed("The editor package download failed.", {DownloadStatus::Failed})) << limit;
        EXPECT_EQ(treeOf(world.downloads), Tree{}) << limit;
    }
}

TEST(InstallPipeline, AnEditorThatIsALinkIsReplacedAndWhatItLedToStays) {
    InstallWorld world;
    const fs::path built = world.folder.write("build/editor.exe", "built");
    fs::remove_all(world.editor);
    fs::create_directory_symlink(built.parent_path(), world.editor);
    world.release("2.0", kArchive);
    EXPECT_EQ(world.run().status, EditorInstallStatus::Installed);
    EXPECT_EQ(readFileBytes(built), "built");
    EXPECT_FALSE(fs::is_symlink(world.editor));
}

// An old editor that cannot be deleted, as when a process holds its files: the new files go again, and whatever was
// left of the old ones does not pass for an editor.
TEST(InstallPipeline, AFailedSwapLeavesNoStagingAndNoHalfAnEditor) {
    if (geteuid() != 0) GTEST_SKIP() << "needs root, to become somebody who may not delete";
    constexpr auto kReadOnly =
        fs::perms::owner_read | fs::perms::owner_exec | fs::perms::others_read | fs::perms::others_exec;
    for (const bool nothingCanGo : {true, false}) {
        InstallWorld world;
        world.installOldEditor();
        std::vector<fs::path> fixed;
        for (int i = 0; i < 10 && !nothingCanGo; ++i)
            fixed.push_back(world.folder.write(world.editor / std::to_string(i) / "held", "old").parent_path());
        if (nothingCanGo) fixed = {world.editor, world.editor / "data"};
        for (const auto& entry : fs::recursive_directory_iterator(world.folder.path()))
            fs::permissions(entry.path(), fs::perms::all);
        fs::permissions(world.folder.path(), fs::perms::all);
        for (const fs::path& directory : fixed)
            fs::permissions(directory, kReadOnly);
        world.release("2.0", kArchive);
        ASSERT_EQ(seteuid(65534), 0);
        const Outcome outcome = world.run();
        ASSERT_EQ(seteuid(0), 0);
        EXPECT_EQ(outcome, failed("Could not move the extracted editor into place.", {DownloadStatus::Installing}));
        EXPECT_FALSE(fs::exists(world.staging));
        EXPECT_EQ(world.oldEditorIsUntouched(), nothingCanGo);
        EXPECT_EQ(fs::exists(world.editor / "editor.exe"), nothingCanGo);
        EXPECT_EQ(fs::exists(world.editor / ".zantor_editor_version"), nothingCanGo);
        EXPECT_TRUE(nothingCanGo || fs::exists(world.editor / "0" / "held"));
    }
}

#endif
