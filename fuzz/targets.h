#pragma once

// Each target passes arbitrary bytes to one reader of the launcher, and aborts when the result breaks a promise of the
// reader. One thread at a time.

#include <map>
#include <string>
#include <string_view>

using FuzzTarget = void (*)(std::string_view input);

// By name. Each name has a folder of seeds in fuzz/corpus.
[[nodiscard]] const std::map<std::string, FuzzTarget>& fuzzTargets();
