#pragma once

// What volo-publish asks the operating system. One source per platform. Any thread.

#include <string>

// True when standard error is shown to a person and not written to a file or pipe.
[[nodiscard]] bool stderrIsTerminal();

// True when users other than the owner may read the file. Always false on Windows, where files have no modes.
[[nodiscard]] bool othersMayRead(const std::string& path);
