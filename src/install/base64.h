#pragma once

// Base64 in the standard alphabet with padding, for keys and signatures. Any thread.

#include <string>
#include <string_view>

std::string base64Encode(std::string_view bytes);

// The bytes of a canonical text: the one text that encoding them again gives. Empty for any other text.
std::string base64DecodeCanonical(std::string_view text);
