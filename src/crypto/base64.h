#pragma once

// Encodes and decodes Base64, in the standard and the URL-safe alphabet. Any thread.

#include <string>
#include <string_view>

// Encodes in the standard alphabet with padding.
[[nodiscard]] std::string base64Encode(std::string_view bytes);

// Encodes in the URL-safe alphabet of RFC 4648 without padding.
[[nodiscard]] std::string base64UrlEncode(std::string_view bytes);

// Decodes the standard alphabet with padding. Returns an empty text unless base64Encode of the decoded bytes is exactly
// `text`. So white space, missing padding, and unused bits that are not zero are refused.
[[nodiscard]] std::string base64DecodeCanonical(std::string_view text);

// Decodes both alphabets, also mixed in one text. "=" ends the text. Skips other bytes and ignores bits at the end that
// do not fill a byte.
[[nodiscard]] std::string base64DecodeLenient(std::string_view text);
