#pragma once

#include <string>

// The letters in the avatar: the first byte of each of the first two words, in upper case, or "?" if there is no word.
// Only a space separates words.
[[nodiscard]] std::string userInitials(const std::string& name);
