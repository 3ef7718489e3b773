#pragma once

// Operating-system functions of volo-publish. One source per platform. Any thread.

#include <string>

// True if standard error is a terminal, not a file or a pipe.
[[nodiscard]] bool stderrIsTerminal();

// True if users other than the owner may read the file. Always false on Windows, where files have no modes.
[[nodiscard]] bool othersMayRead(const std::string& path);
