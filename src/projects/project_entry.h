#pragma once

// One entry of the user's project list.

#include <cstdint>
#include <string>

struct ProjectEntry {
    std::string name;
    std::string path;            // full path of the .zantorproj file; identifies the entry
    std::string targetPlatform;  // text of the Platform column; empty: show the default label
    std::string editorVersion;   // text of the Editor column; empty: show the default label
    std::int64_t lastOpened = 0; // when the launcher last opened, added or created it; seconds since the Unix epoch
    bool favorite = false;       // shown as a star

    bool operator==(const ProjectEntry&) const = default;
};
