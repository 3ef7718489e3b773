#pragma once

// Decides when a statement must be renewed. Pure functions. Any thread.

#include <cstdint>
#include <string>

#include "publish/site.h"

namespace site {
inline constexpr std::int64_t kWarningDays = 10; // warn this many days before a statement expires
} // namespace site

// True if launchers refuse the statement because of its date.
[[nodiscard]] bool isExpired(const PublishedStatement& published, std::int64_t nowSeconds);

// Returns a warning if the statement expires within kWarningDays; otherwise an empty text.
[[nodiscard]] std::string expiryWarning(const PublishedStatement& published, std::int64_t nowSeconds);

// Returns a warning if launchers refuse the offered release now, or will refuse it within kWarningDays. The text says
// what the publisher must do. Returns an empty text if the publisher need not do anything.
[[nodiscard]] std::string offerWarning(const std::string& siteDirectory, const PublishedManifest& offer,
                                       const PublishedStatement* published, std::int64_t nowSeconds);
