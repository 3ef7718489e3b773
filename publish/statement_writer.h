#pragma once

// Writes and signs release statements (install/release_statement.h); renews and withdraws published ones. Blocking; any
// thread.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "install/release_statement.h"
#include "publish/keys.h"

namespace statement {
inline constexpr std::string_view kStatusRevoked = "revoked";
}

// A statement that holds for `days` from now on. Empty when it cannot be signed, or when launchers would refuse it.
[[nodiscard]] std::string writeStatement(const PackageIdentity& package, std::string_view status,
                                         std::int64_t nowSeconds, int days, const std::vector<PublisherKey>& keys);

struct StatementRequest {
    std::string siteDirectory;
    std::vector<std::string> versions; // choose statements by version
    std::vector<std::string> packages; // choose statements by package hash, or its first digits
    bool all = false;                  // choose all that are neither expired nor withdrawn
    bool revoke = false;               // withdraw the chosen ones instead of renewing them
    int days = 0;
    std::string trustedKeys; // more public keys whose signatures count, as in the launcher's configuration
    std::int64_t nowSeconds = 0;
};

struct StatementReport {
    std::vector<std::string> lines;
    std::vector<std::string> warnings;
};

// Renews or withdraws the chosen statements, then reports on all statements of the site; without a choice it only
// reports. Signs only statements with a good signature of a signing or trusted key, so that nobody who can write to the
// directory gets a statement of their own signed. Returns false with a message for the user in `failureText`. All
// checks come before the first write: when one fails, no statement has changed.
[[nodiscard]] bool renewStatements(const StatementRequest& request, const std::vector<PublisherKey>& keys,
                                   StatementReport& report, std::string& failureText);
