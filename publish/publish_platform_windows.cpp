#include "publish/publish_platform.h"

#include <cstdio>
#include <string>

#include <io.h>

bool stderrIsTerminal() {
    return _isatty(_fileno(stderr)) != 0;
}

bool othersMayRead(const std::string&) {
    return false;
}
