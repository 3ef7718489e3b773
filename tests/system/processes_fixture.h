#pragma once

// Starts copies of the test child (programs/test_child.cpp) as real processes. Other tests on the machine may run an
// editor for a moment, so the tests wait until no editor runs.

#include <filesystem>
#include <map>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "support/eventually.h"
#include "support/platform.h"
#include "support/scoped_environment.h"
#include "support/temporary_folder.h"
#include "system/operating_system.h"

class Processes : public testing::Test {
  protected:
    using Report = std::map<std::string, std::string>;

    Processes() {
        std::filesystem::create_directory(reports_);
        endChildren();
    }
    ~Processes() override { endChildren(); } // NOLINT(bugprone-exception-escape): a failed test may end the program

    [[nodiscard]] std::string childNamed(const std::string& name) const {
        const std::filesystem::path copy = folder_ / "a folder with blanks" / name;
        const std::string child = launcherDirectory() + "/volo_test_child" + (kOnWindows ? ".exe" : "");
        std::filesystem::create_directories(copy.parent_path());
        std::filesystem::copy_file(child, copy);
        return copy.string();
    }

    static void launch(const std::string& executable, const std::string& argument = {},
                       const std::string& directory = {}) {
        std::string errorText;
        EXPECT_TRUE(launchEditorProcess(executable, argument, directory, errorText)) << errorText;
    }

    // Waits for the next report that a child writes about itself, and returns the report.
    [[nodiscard]] Report nextReport() const {
        std::filesystem::path file;
        EXPECT_TRUE(eventually([&] {
            for (const auto& entry : std::filesystem::directory_iterator(reports_))
                file = entry.path();
            return !file.empty();
        })) << "no child wrote a report";
        std::istringstream lines(readFileBytes(file));
        std::filesystem::remove(file);
        Report values;
        for (std::string line; std::getline(lines, line);)
            values[line.substr(0, line.find('='))] = line.substr(line.find('=') + 1);
        return values;
    }

    // Starts `count` processes that each try to take the single-instance guard. Returns how many of them got it.
    [[nodiscard]] int instancesWithGuard(const std::string& executable, int count) const {
        for (int i = 0; i < count; ++i)
            launch(executable, "--guard");
        int holding = 0;
        for (int i = 0; i < count; ++i)
            holding += nextReport()["guard"] == "held" ? 1 : 0;
        return holding;
    }

    // Makes all children end. Children that start later end at once.
    void letChildrenEnd() const { folder_.write("until", ""); }

    void endChildren() const {
        letChildrenEnd();
        EXPECT_TRUE(eventually([] { return !isEditorRunning(); })) << "an editor runs";
        std::filesystem::remove(folder_ / "until");
    }

    TemporaryFolder folder_;
    std::filesystem::path reports_ = folder_ / "reports";
    ScopedEnvironment childFolder_{"VOLO_CHILD_FOLDER", folder_.string()};
    ScopedEnvironment runtime_{"XDG_RUNTIME_DIR", folder_.string()};
};
