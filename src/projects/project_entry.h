#pragma once

// One row of the user's project list. A plain record, copied freely.

#include <cstdint>
#include <string>

struct ProjectEntry {
    std::string name;
    std::string path;            // of the .zantorproj file; the entry's identity
    std::string targetPlatform;  // shown as it stands; empty means the default label
    std::string editorVersion;   // likewise
    std::int64_t lastOpened = 0; // seconds since the Unix epoch; opened from the launcher, or added
    bool favorite = false;       // the star

    bool operator==(const ProjectEntry&) const = default;
};
