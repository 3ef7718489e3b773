#pragma once

// Base64 in its two alphabets. Any thread.

#include <string>
#include <string_view>

// The standard alphabet with padding.
[[nodiscard]] std::string base64Encode(std::string_view bytes);

// The URL-safe alphabet of RFC 4648 without padding.
[[nodiscard]] std::string base64UrlEncode(std::string_view bytes);

// Decodes the standard alphabet strictly. Empty unless encoding the result gives exactly `text`.
[[nodiscard]] std::string base64DecodeCanonical(std::string_view text);

// Decodes either alphabet, also mixed. "=" ends the text. Other bytes are skipped, and bits that do not fill a byte are
// dropped.
[[nodiscard]] std::string base64DecodeLenient(std::string_view text);
