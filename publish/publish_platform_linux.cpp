#include "publish/publish_platform.h"

#include <string>

#include <sys/stat.h>
#include <unistd.h>

bool stderrIsTerminal() {
    return ::isatty(STDERR_FILENO) == 1;
}

bool othersMayRead(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 && (status.st_mode & 077) != 0;
}
