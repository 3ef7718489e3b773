#pragma once

#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/ui_harness.h"

// A signed-in launcher with an editor, no update server, and the projects "c", "b" and "a", newest first.
struct ProjectsTest : testing::Test, UiHarness {
    using Names = std::vector<std::string>;

    ProjectsTest() {
        startSignedIn("https://127.0.0.1:1/manifest").updateCheckStarted = true; // prevents the automatic update
        app->settings->setProjects({makeProject("c", 30), makeProject("b", 20), makeProject("a", 10)});
        frames(2);
    }
    [[nodiscard]] const std::vector<ProjectEntry>& projects() const { return app->settings->projects(); }

    // listed() returns the names in the stored order, shown() the names of the visible rows from top to bottom.
    [[nodiscard]] Names listed() const {
        Names names;
        for (const ProjectEntry& entry : projects())
            names.push_back(entry.name);
        return names;
    }
    [[nodiscard]] Names shown() const {
        std::map<float, std::string> rows;
        for (int index = 0; const std::string& name : listed()) {
            if (const auto row = rect(kProjectList, {index++, "##project_row"})) rows[row->Min.y] = name;
        }
        Names names;
        for (const auto& row : rows)
            names.push_back(row.second);
        return names;
    }

    const std::filesystem::path editor = installEditor();
    RecordingSystem& system = recordingSystem();
};
