#pragma once

// Takes URLs apart, and encodes text for them. Any thread.

#include <string>

// Splits an https URL. `path` includes query and fragment; it is "/" if the URL has no path. `port` is 443 if the URL
// has no port. Returns false for another scheme, a port outside 1 to 65535, user information, a bracketed address or an
// empty host. The outputs are then undefined.
[[nodiscard]] bool parseHttpsUrl(const std::string& url, std::string& host, int& port, std::string& path);

// Replaces each byte that is not an unreserved character of RFC 3986 with %XX.
[[nodiscard]] std::string percentEncode(const std::string& text);
