// Tests what only a POSIX system can show: file modes, a full disk, directories without write permission.
#ifndef _WIN32

#include <csignal>
#include <functional>

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "install/install_world.h"
#include "install/package_extraction.h"

namespace fs = std::filesystem;

static const std::string kArchive = makeZip({{"editor.exe", std::string(300000, 'n')}});

TEST(PackageExtraction, KeepsUnixModesAndMakesEveryEditorExecutable) {
    ZipEntry foreign = unixEntry("foreign", "x", 0100755);
    foreign.madeBy = 20; // not made on Unix, so the attributes do not contain a mode
    const std::pair<ZipEntry, unsigned> cases[] = {
        {unixEntry("tool", "x", 0100755), 0755},
        {unixEntry("secret", "x", 0100400), 0600},
        {unixEntry("setuid", "x", 0104755), 0755},
        {unixEntry("typeless", "x", 0640), 0640},
        {unixEntry("link", "x", 0120777), 0644},
        {unixEntry("wide", "x", 0100777), 0755},
        {foreign, 0644},
        {unixEntry("editor.exe", "x", 0100600), 0711},
        {unixEntry("editor/editor.exe", "", 0), 0755},
        {unixEntry("lib/editor.exe", "x", 0100644), 0644},
    };
    std::vector<ZipEntry> entries;
    for (const auto& [entry, mode] : cases)
        entries.push_back(entry);
    const TemporaryFolder folder;
    fs::create_directories(folder / "staging");
    ASSERT_EQ(extractArchive(folder.write("archive", makeZip(entries)).string(), (folder / "staging").string(), {}),
              ExtractionOutcome::Done);
    for (const auto& [entry, mode] : cases)
        EXPECT_EQ(static_cast<unsigned>(fs::status(folder / "staging" / entry.name).permissions()), mode) << entry.name;
}

TEST(PackageDownload, AFullDiskFailsTheTransfer) {
    for (const std::size_t limit : {std::size_t{0}, kArchive.size() - 1}) {
        InstallWorld world(kArchive);
        rlimit before{};
        getrlimit(RLIMIT_FSIZE, &before);
        std::signal(SIGXFSZ, SIG_IGN); // a write beyond the limit then fails as on a full disk
        const rlimit full{limit, before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &full);
        const std::string outcome = world.run();
        setrlimit(RLIMIT_FSIZE, &before);
        EXPECT_EQ(outcome, "Failed: The editor package download failed. [Failed]") << limit;
        EXPECT_EQ(treeOf(world.downloads), Tree{}) << limit;
    }
}

TEST(InstallPipeline, LeavesNoThreadAndNoOpenFile) {
    InstallWorld world(kArchive);
    const auto use = [&] { // runs an update, then counts the threads and the open files
        world.release("2.0", kArchive);
        EXPECT_TRUE(world.run().starts_with("Installed"));
        fs::remove_all(world.editor);
        std::error_code noProc; // a system without /proc
        return std::pair{std::distance(fs::directory_iterator("/proc/self/task", noProc), {}),
                         std::distance(fs::directory_iterator("/proc/self/fd", noProc), {})};
    };
    use(); // not counted, because the test's server creates threads during the first run
    const auto before = use();
    EXPECT_TRUE(eventually([&] { return use() == before; }));
}

// --- syncs ---------------------------------------------------------------------------------------------------------

static std::function<void(const fs::path& path)> onSync;

static int recordSync(int file, long call) {
    if (onSync) onSync(fs::read_symlink("/proc/self/fd/" + std::to_string(file)));
    return static_cast<int>(syscall(call, file));
}
// In this program, these two functions replace those of the C library.
extern "C" int fsync(int file) {
    return recordSync(file, SYS_fsync);
}
extern "C" int syncfs(int file) noexcept {
    return recordSync(file, SYS_syncfs);
}

TEST(InstallPipeline, EverythingIsOnTheDiskBeforeWhatReplacesOrRecordsIt) {
    InstallWorld world(kArchive);
    world.installOldEditor();
    const fs::path package = world.downloads / "zantor_editor_2.0.zip";
    const fs::path marker = world.editor / ".zantor_editor_version";
    std::vector<std::string> synced;
    onSync = [&](const fs::path& path) {
        synced.push_back(path.filename().string() + (fs::exists(package) ? " with package" : "") + " for editor " +
                         readFileBytes(world.editor / "editor.exe").substr(0, 3) + " " + readFileBytes(marker));
    };
    EXPECT_EQ(world.run(), "Installed: Installed — version 2.0 [Installed]");
    onSync = nullptr;
    EXPECT_EQ(synced, (std::vector<std::string>{"zantor_editor_2.0.zip.part for editor old 1.0\n",
                                                "editor.exe with package for editor old 1.0\n",
                                                ".zantor_editor_version with package for editor nnn 2.0\n"}));
}

TEST(InstallPipeline, ReplacesAnEditorThatIsALinkAndKeepsItsTarget) {
    InstallWorld world(kArchive);
    const fs::path built = world.folder.write("build/editor.exe", "built");
    fs::create_directory_symlink(built.parent_path(), world.editor);
    EXPECT_EQ(world.run(), "Installed: Installed — version 2.0 [Installed]");
    EXPECT_EQ(readFileBytes(built), "built");
    EXPECT_FALSE(fs::is_symlink(world.editor));
}

// The old editor cannot be deleted: in the first round nothing of it, in the second round one of its directories.
TEST(InstallPipeline, AFailedSwapLeavesNoStagingAndNoHalfEditor) {
    if (geteuid() != 0) GTEST_SKIP() << "needs root, to become a user who may not delete";
    for (const bool nothingCanGo : {true, false}) {
        ASSERT_EQ(seteuid(65534), 0);
        InstallWorld world(kArchive);
        world.installOldEditor();
        fs::permissions(world.editor / "data", fs::perms::owner_write, fs::perm_options::remove);
        if (nothingCanGo) fs::permissions(world.editor, fs::perms::owner_write, fs::perm_options::remove);
        EXPECT_EQ(world.run(), "Failed: Could not move the extracted editor into place. [Installing]");
        ASSERT_EQ(seteuid(0), 0);
        EXPECT_FALSE(fs::exists(world.staging));
        EXPECT_EQ(treeOf(world.editor).size(), nothingCanGo ? 4u : 2u) << "neither executable nor marker";
    }
}

#endif
