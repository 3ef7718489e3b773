#pragma once

// Percent-encoding of RFC 3986. Any thread.

#include <string>

// Every byte that is no unreserved character becomes %XX.
[[nodiscard]] std::string percentEncode(const std::string& text);
