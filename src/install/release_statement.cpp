#include "install/release_statement.h"

#include <algorithm>
#include <charconv>

#include "crypto/base64.h"
#include "crypto/ed25519.h"

namespace {

// Moves the first line of `text` to `line`. False if the line does not end with a line feed.
bool takeLine(std::string_view& text, std::string_view& line) {
    const std::size_t end = text.find('\n');
    if (end == std::string_view::npos) return false;
    line = text.substr(0, end);
    text.remove_prefix(end + 1);
    return true;
}

// Removes the first line from `text` and sets `value`. False if the line is not "<name>: <value>".
bool takeField(std::string_view& text, std::string_view name, std::string_view& value) {
    if (!takeLine(text, value) || !value.starts_with(name)) return false;
    value.remove_prefix(name.size());
    if (!value.starts_with(statement::kFieldSeparator)) return false;
    value.remove_prefix(statement::kFieldSeparator.size());
    return true;
}

// Parses a plain decimal number: no sign, no leading zero, nothing after the digits.
bool parseNumber(const std::string& text, std::int64_t& number) {
    if (text.empty() || text.front() < '0' || text.front() > '9' || (text.front() == '0' && text.size() > 1))
        return false;
    const char* const end = text.data() + text.size();
    const auto [stopped, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && stopped == end;
}

} // namespace

bool parseReleaseStatement(std::string_view text, ReleaseStatement& release) {
    const auto allowed = [](char byte) { return byte == '\n' || (byte >= 0x20 && byte <= 0x7E); };
    if (text.size() > statement::kMaxBytes || !std::all_of(text.begin(), text.end(), allowed)) return false;
    std::string_view rest = text;
    std::string_view value;
    if (!takeLine(rest, value) || value != statement::kFirstLine) return false;
    for (std::size_t field = 0; field < statement::kFieldCount; ++field) {
        if (!takeField(rest, statement::kFieldNames[field], value)) return false;
        release.fields[field] = value;
    }
    release.signedText = text.substr(0, text.size() - rest.size());
    release.signatures.clear();
    while (!rest.empty()) {
        if (release.signatures.size() == statement::kMaxSignatures ||
            !takeField(rest, statement::kSignatureName, value))
            return false;
        release.signatures.push_back(base64DecodeCanonical(value));
        if (release.signatures.back().size() != kEd25519SignatureSize) return false;
    }
    return !release.signatures.empty();
}

bool parseStatementNumbers(const ReleaseStatement& release, StatementNumbers& numbers) {
    return parseNumber(release.fields[statement::Size], numbers.size) &&
           parseNumber(release.fields[statement::NotBefore], numbers.notBefore) &&
           parseNumber(release.fields[statement::NotAfter], numbers.notAfter) && numbers.notAfter > numbers.notBefore &&
           numbers.notAfter - numbers.notBefore <= statement::kMaxLifetimeSeconds;
}

bool isSignedByAny(const ReleaseStatement& release, const std::vector<std::string>& keys) {
    return std::any_of(keys.begin(), keys.end(), [&](const std::string& key) {
        return std::any_of(release.signatures.begin(), release.signatures.end(), [&](const std::string& signature) {
            return verifyEd25519(release.signedText, signature, key);
        });
    });
}

std::vector<std::string> parsePublisherKeys(const std::string& text) {
    std::vector<std::string> keys;
    for (std::size_t start = 0; (start = text.find_first_not_of(' ', start)) != std::string::npos;) {
        const std::size_t end = std::min(text.find(' ', start), text.size());
        keys.push_back(base64DecodeCanonical(std::string_view(text).substr(start, end - start)));
        if (keys.back().size() != kEd25519KeySize || keys.size() > statement::kMaxSignatures) return {};
        start = end;
    }
    return keys;
}

std::string judgeReleaseStatement(std::string_view text, const std::vector<std::string>& keys,
                                  const PackageIdentity& package, std::int64_t nowSeconds) {
    static const char kMalformed[] = "the release statement is malformed.";
    ReleaseStatement release;
    if (!parseReleaseStatement(text, release)) return kMalformed;
    if (!isSignedByAny(release, keys)) return "the release is not signed by a trusted key.";

    StatementNumbers numbers;
    const auto& fields = release.fields;
    if (!parseStatementNumbers(release, numbers)) return kMalformed;
    if (fields[statement::Version] != package.version || numbers.size != package.size ||
        fields[statement::Sha256] != package.sha256 || fields[statement::PlaintextSha256] != package.plaintextSha256)
        return "the release statement is for a different package.";
    if (fields[statement::Status] != statement::kStatusOk) return "this release was withdrawn by its publisher.";
    if (nowSeconds < numbers.notBefore - statement::kClockToleranceSeconds)
        return "the release statement is not valid yet. Check this computer's date and time.";
    if (nowSeconds - statement::kClockToleranceSeconds > numbers.notAfter)
        return "the release statement has expired. Check this computer's date and time.";
    return {};
}
