#pragma once

// Files that only their owner may read: what holds a token. One source per platform. Any thread.

#include <string>

// Creates a folder and its missing parents, each of them for the owner alone where the platform has such modes. What
// exists already keeps its mode. A failure shows when something is to be written there.
void createPrivateFolders(const std::string& path);

// Writes a whole file as text, for the owner alone from the first byte on, also where a wider file of that name exists,
// and waits until the bytes are safe to be renamed over another file. False when any of it failed; what was written
// stays then.
[[nodiscard]] bool writePrivateFile(const std::string& path, const std::string& text);
