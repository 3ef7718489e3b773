#pragma once

#include <string>

// Returns the lines "key=value" of the report that only the tests of the current platform read.
std::string platformReport();
