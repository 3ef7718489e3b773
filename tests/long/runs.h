#pragma once

// The runs of the driver that have servers of their own. Each prints what it finds and returns true if nothing is wrong.

#include <string>

[[nodiscard]] bool runMatrix();

// `kind` is "cycles" (install, open, exit) or "rounds" (random clicks).
[[nodiscard]] bool runSoak(const std::string& kind, int count);
