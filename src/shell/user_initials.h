#pragma once

#include <string>

// Returns the letters for the avatar: the first byte of each of the first two words, in upper case. Only spaces
// separate words. Returns "?" if there is no word.
[[nodiscard]] std::string userInitials(const std::string& name);
