#pragma once

// What a test without screens sets of the operating system's side, in the place of the real one: where the launcher
// stands, and what time it is. Environment variables are the real ones.

#include <cstdint>
#include <string>

void setLauncherDirectory(const std::string& directory);
void setCurrentTime(std::int64_t seconds); // 0: the real time
