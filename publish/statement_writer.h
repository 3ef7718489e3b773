#pragma once

// Writes and signs release statements (install/release_statement.h). Renews and withdraws published statements.
// Blocking; any thread.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "install/release_statement.h"
#include "publish/keys.h"

namespace statement {
inline constexpr std::string_view kStatusRevoked = "revoked";
}

// Returns a statement that is valid from `nowSeconds` for `days` days. Empty if it cannot be signed or if launchers
// would refuse it.
[[nodiscard]] std::string writeStatement(const PackageIdentity& package, std::string_view status,
                                         std::int64_t nowSeconds, int days, const std::vector<PublisherKey>& keys);

struct StatementRequest {
    std::string siteDirectory;
    std::vector<std::string> versions; // select statements by version
    std::vector<std::string> packages; // select statements by the first digits of the package's hash
    bool all = false;                  // select all statements that are neither expired nor withdrawn
    bool offered = false;              // select the release that the manifest offers
    bool revoke = false;               // withdraw the selected statements instead of renewing them
    int days = 0;
    std::string trustedKeys; // public keys to trust besides the signing keys, as in the launcher's configuration
    std::int64_t nowSeconds = 0;
};

struct StatementReport {
    bool offerNeedsAction = false; // launchers refuse the offered release now, or will within site::kWarningDays
    std::vector<std::string> lines;
    std::vector<std::string> warnings;
};

// Renews or withdraws the selected statements, then reports on all statements of the site. If none is selected, only
// reports. Signs a statement only if it already has a valid signature by one of `keys` or of the trusted keys, so that
// an attacker who can write to the directory cannot get a forged statement signed. On failure returns false and sets
// `failureText` to a message for the user. All checks are done before the first write, so that no statement changes if
// a check fails.
[[nodiscard]] bool renewStatements(const StatementRequest& request, const std::vector<PublisherKey>& keys,
                                   StatementReport& report, std::string& failureText);
