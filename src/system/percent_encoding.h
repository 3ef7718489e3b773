#pragma once

// Percent-encoding of RFC 3986. Any thread.

#include <string>

// Every byte that is no unreserved character becomes %XX.
[[nodiscard]] std::string percentEncode(const std::string& text);

// Decodes every %XX. A "%" without two hexadecimal digits after it stays as it is.
[[nodiscard]] std::string percentDecode(const std::string& text);
