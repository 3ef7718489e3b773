#include "publish/statement_expiry.h"

bool isExpired(const PublishedStatement& published, std::int64_t nowSeconds) {
    return published.numbers.notAfter < nowSeconds;
}

std::string expiryWarning(const PublishedStatement& published, std::int64_t nowSeconds) {
    const std::int64_t left = published.numbers.notAfter - nowSeconds;
    if (published.isWithdrawn() || left < 0 || left > site::kWarningDays * statement::kDaySeconds) return {};
    return "The statement of " + published.label() + " ends in " + std::to_string(left / statement::kDaySeconds) +
           " days, on " + utcDate(published.numbers.notAfter) + ". Renew it before.";
}

std::string offerWarning(const std::string& siteDirectory, const PublishedManifest& offer,
                         const PublishedStatement* published, std::int64_t nowSeconds) {
    const std::string release = "The manifest offers " + offer.manifest.version + ", but ";
    const std::string renew = "Renew it: volo-publish statement --out " + siteDirectory + " --offered --sign-key FILE";
    if (!published) return release + "its statement is missing. Publish the release again.";
    const std::string until = utcDate(published->numbers.notAfter);
    if (published->isWithdrawn()) return release + "it is withdrawn. Publish another release.";
    if (isExpired(*published, nowSeconds)) return release + "its statement expired on " + until + ". " + renew;
    if (!expiryWarning(*published, nowSeconds).empty())
        return release + "its statement ends on " + until + ". " + renew;
    return {};
}
