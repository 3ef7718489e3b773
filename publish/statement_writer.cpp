#include "publish/statement_writer.h"

#include <array>
#include <cstddef>

#include "crypto/base64.h"
#include "publish/site.h"
#include "publish/statement_expiry.h"

std::string writeStatement(const PackageIdentity& package, std::string_view status, std::int64_t nowSeconds, int days,
                           const std::vector<PublisherKey>& keys) {
    const std::array<std::string, statement::kFieldCount> values = {
        package.version,
        std::to_string(package.size),
        package.sha256,
        package.plaintextSha256,
        std::to_string(nowSeconds),
        std::to_string(nowSeconds + days * statement::kDaySeconds),
        std::string(status)};
    std::string text = std::string(statement::kFirstLine) + "\n";
    const auto addLine = [&text](std::string_view name, std::string_view value) {
        text.append(name).append(statement::kFieldSeparator).append(value).append("\n");
    };
    for (std::size_t field = 0; field < statement::kFieldCount; ++field)
        addLine(statement::kFieldNames[field], values[field]);
    const std::string signedText = text;
    for (const PublisherKey& key : keys)
        addLine(statement::kSignatureName, base64Encode(key.sign(signedText)));
    ReleaseStatement release;
    StatementNumbers numbers;
    return parseReleaseStatement(text, release) && parseStatementNumbers(release, numbers) ? text : std::string();
}

namespace {

// Marks the statements that the request selects. False if a version or hash in the request matches no statement.
bool choose(const StatementRequest& request, const std::vector<PublishedStatement>& statements,
            std::vector<bool>& chosen, std::string& failureText) {
    const auto mark = [&](const std::string& name, const auto& matches) {
        bool found = false;
        for (std::size_t i = 0; i < statements.size(); ++i) {
            if (!matches(statements[i])) continue;
            chosen[i] = found = true;
        }
        if (!found) failureText = "No release statement is for \"" + name + "\".";
        return found;
    };
    chosen.assign(statements.size(), false);
    for (const std::string& version : request.versions)
        if (!mark(version, [&](const auto& one) { return one.field(statement::Version) == version; })) return false;
    for (const std::string& package : request.packages)
        if (!mark(package, [&](const auto& one) {
                return !package.empty() && one.field(statement::Sha256).starts_with(package);
            }))
            return false;
    if (request.all)
        for (std::size_t i = 0; i < statements.size(); ++i)
            chosen[i] = !isExpired(statements[i], request.nowSeconds) && !statements[i].isWithdrawn();
    if (request.offered) {
        PublishedManifest offer;
        if (!readManifest(joinPath(request.siteDirectory, site::kManifestName), offer, failureText)) return false;
        if (!mark(offer.manifest.version,
                  [&](const auto& one) { return one.field(statement::Sha256) == offer.manifest.sha256; }))
            return false;
    }
    return true;
}

// Returns the new text of one statement. If the statement must not or cannot be signed, returns an empty text and sets
// `failureText`.
std::string renewedText(const StatementRequest& request, const PublishedStatement& published,
                        const std::vector<std::string>& trusted, const std::vector<PublisherKey>& keys,
                        std::string& failureText) {
    if (!isSignedByAny(published.release, trusted)) {
        failureText = published.path + " has no good signature of a given key. If a key that you no longer have "
                                       "signed it, give that public key with --keys.";
        return {};
    }
    if (published.isWithdrawn() && !request.revoke) {
        failureText = published.label() + " was withdrawn. Publish it with release --force to offer it again.";
        return {};
    }
    const PackageIdentity package{published.field(statement::Version), published.numbers.size,
                                  published.field(statement::Sha256), published.field(statement::PlaintextSha256)};
    std::string text = writeStatement(package, request.revoke ? statement::kStatusRevoked : statement::kStatusOk,
                                      request.nowSeconds, request.days, keys);
    if (text.empty()) failureText = published.label() + " could not be signed.";
    return text;
}

void reportOn(const PublishedStatement& published, std::int64_t nowSeconds, StatementReport& report) {
    const std::string until = utcDate(published.numbers.notAfter);
    report.lines.push_back(published.label() + ": " +
                           (published.isWithdrawn()            ? "withdrawn"
                            : isExpired(published, nowSeconds) ? "expired on " + until
                                                               : "holds until " + until));
}

// Adds warnings about statements that expire soon. A warning about the offered release also sets `offerNeedsAction`.
void warn(const std::string& siteDirectory, const std::vector<PublishedStatement>& statements, std::int64_t nowSeconds,
          StatementReport& report) {
    PublishedManifest offer;
    std::string ignored;
    const bool offers = readManifest(joinPath(siteDirectory, site::kManifestName), offer, ignored);
    const PublishedStatement* offered = nullptr;
    for (const PublishedStatement& published : statements) {
        const std::string warning = expiryWarning(published, nowSeconds);
        if (offers && published.field(statement::Sha256) == offer.manifest.sha256)
            offered = &published;
        else if (!warning.empty())
            report.warnings.push_back(warning);
    }
    const std::string warning = offers ? offerWarning(siteDirectory, offer, offered, nowSeconds) : std::string();
    report.offerNeedsAction = !warning.empty();
    if (report.offerNeedsAction) report.warnings.push_back(warning);
}

} // namespace

bool renewStatements(const StatementRequest& request, const std::vector<PublisherKey>& keys, StatementReport& report,
                     std::string& failureText) {
    std::vector<PublishedStatement> statements;
    std::vector<bool> chosen;
    FileLock lock;
    if (!keys.empty() && !lockSite(request.siteDirectory, lock, failureText)) return false;
    if (!readStatements(request.siteDirectory, statements, failureText) ||
        !choose(request, statements, chosen, failureText) || !keysLieOutside(request.siteDirectory, keys, failureText))
        return false;
    std::vector<std::string> trusted = parsePublisherKeys(request.trustedKeys);
    if (trusted.empty() && !request.trustedKeys.empty()) {
        failureText = "--keys takes one to four public keys in base64.";
        return false;
    }
    for (const PublisherKey& key : keys)
        trusted.push_back(key.publicKey());

    std::vector<std::string> texts(statements.size());
    for (std::size_t i = 0; i < statements.size(); ++i)
        if (chosen[i] && (texts[i] = renewedText(request, statements[i], trusted, keys, failureText)).empty())
            return false;
    for (std::size_t i = 0; i < statements.size(); ++i) {
        const std::string path = statements[i].path;
        if (chosen[i] && (!replaceFile(path, texts[i], failureText) ||
                          !parseStatementText(path, texts[i], statements[i], failureText)))
            return false;
        reportOn(statements[i], request.nowSeconds, report);
    }
    warn(request.siteDirectory, statements, request.nowSeconds, report);
    return true;
}
