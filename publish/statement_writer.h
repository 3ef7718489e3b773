#pragma once

// Writes and signs release statements (install/release_statement.h), renews and withdraws published ones.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "install/release_statement.h"
#include "publish/keys.h"

namespace statement {
inline constexpr std::string_view kStatusRevoked = "revoked";
}

// A statement that holds from now for that many days. Empty when it could not be signed, or would not be taken.
std::string writeStatement(const PackageIdentity& package, std::string_view status, std::int64_t nowSeconds, int days,
                           const std::vector<PublisherKey>& keys);

struct StatementRequest {
    std::string siteDirectory;
    std::vector<std::string> versions; // which to sign; and
    std::vector<std::string> packages; // by package hash, or its first digits
    bool all = false;                  // instead: those that are neither expired nor withdrawn
    bool revoke = false;
    int days = 0;
    std::string trustedKeys; // public keys besides those of the signing keys, as the launcher's configuration has them
    std::int64_t nowSeconds = 0;
};

struct StatementReport {
    std::vector<std::string> lines;
    std::vector<std::string> warnings;
};

// Signs the chosen statements anew, or withdraws them; without a choice it only looks. Reports on all statements of the
// site afterwards. Only what carries a good signature of a signing or a trusted key is signed: who can write to the
// directory cannot have a statement of theirs signed. Either all of the chosen are replaced or, on false, with words
// for the user in `failureText`, none for a reason that could be known beforehand.
[[nodiscard]] bool renewStatements(const StatementRequest& request, const std::vector<PublisherKey>& keys,
                                   StatementReport& report, std::string& failureText);
