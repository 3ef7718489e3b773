#pragma once

// Percent-encoding of RFC 3986. Any thread.

#include <string>

// Everything but the unreserved characters becomes %XX, byte by byte.
[[nodiscard]] std::string percentEncode(const std::string& text);
