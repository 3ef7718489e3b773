#pragma once

// One entry of the user's project list.

#include <cstdint>
#include <string>

struct ProjectEntry {
    std::string name;
    std::string path;            // full path of the .zantorproj file; identifies the entry
    std::string targetPlatform;  // the Platform column; empty shows the default label
    std::string editorVersion;   // the Editor column; empty shows the default label
    std::int64_t lastOpened = 0; // seconds since the Unix epoch: the last open from the launcher, or the adding
    bool favorite = false;       // shown as a star

    bool operator==(const ProjectEntry&) const = default;
};
