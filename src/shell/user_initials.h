#pragma once

#include <string>

// The letters in the avatar disc: the first byte of each of the first two words, in capitals; "?" when there is no
// word. Only a space separates words.
std::string userInitials(const std::string& name);
