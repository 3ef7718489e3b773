#pragma once

#include <string>

// More lines "key=value", for the tests of one platform.
std::string platformReport();
