#pragma once

// Implements the percent-encoding of RFC 3986. Any thread.

#include <string>

// Replaces each byte that is not an unreserved character with %XX.
[[nodiscard]] std::string percentEncode(const std::string& text);
