#pragma once

// Each target passes arbitrary bytes to one function of the launcher, and aborts the process if the result breaks a
// guarantee of this function. Run only one target at a time.

#include <map>
#include <string>
#include <string_view>

using FuzzTarget = void (*)(std::string_view input);

// Returns all targets by name. Each target has a folder with its name in fuzz/corpus, which contains its seed inputs.
[[nodiscard]] const std::map<std::string, FuzzTarget>& fuzzTargets();
