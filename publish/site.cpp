#include "publish/site.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>
#include <tuple>

#include "crypto/random_bytes.h"
#include "system/http.h"
#include "system/json.h"

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kTemporaryExtension = ".tmp";

} // namespace

std::string joinPath(const std::string& directory, std::string_view name) {
    return (fs::path(directory) / name).string();
}

std::string statementPath(const std::string& siteDirectory, const std::string& sha256) {
    return joinPath(joinPath(siteDirectory, site::kStatementsName), sha256 + std::string(statement::kFileExtension));
}

bool readSmallFile(const std::string& path, std::size_t maxBytes, std::string& text) {
    std::ifstream file(path, std::ios::binary);
    text.resize(maxBytes + 1);
    file.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<std::size_t>(file.gcount()));
    return file.is_open() && !file.bad() && text.size() <= maxBytes;
}

std::string temporaryName(const std::string& path) {
    constexpr std::size_t kRandomBytes = 9;
    return path + "." + randomUrlToken(kRandomBytes) + std::string(kTemporaryExtension);
}

void makeReadable(const std::string& path) {
    std::error_code ignored;
    const auto everybody = fs::perms::owner_read | fs::perms::group_read | fs::perms::others_read;
    const auto execute = fs::perms::owner_exec | fs::perms::group_exec | fs::perms::others_exec;
    const bool isFolder = fs::is_directory(path, ignored);
    fs::permissions(path, everybody | fs::perms::owner_write | (isFolder ? execute : fs::perms::none), ignored);
}

void makeReadableFolders(const std::string& path) {
    std::error_code error;
    if (path.empty() || fs::exists(path, error)) return;
    makeReadableFolders(fs::path(path).parent_path().string());
    if (fs::create_directory(path, error)) makeReadable(path);
}

bool lockSite(const std::string& siteDirectory, FileLock& lock, std::string& failureText) {
    makeReadableFolders(siteDirectory);
    if (lock.tryToTake(joinPath(siteDirectory, site::kLockName)) == FileLock::Result::Held) {
        failureText = "Another volo-publish is changing " + siteDirectory + ". Try again when it has ended.";
        return false;
    }
    for (const std::string& folder : {siteDirectory, joinPath(siteDirectory, site::kStatementsName)}) {
        std::error_code error;
        for (const fs::directory_entry& entry : fs::directory_iterator(folder, error))
            if (entry.path().extension() == kTemporaryExtension && entry.path().filename() != site::kLockName)
                fs::remove(entry.path(), error);
    }
    return true;
}

bool replaceFile(const std::string& path, const std::string& text, std::string& failureText) {
    const std::string temporary = temporaryName(path);
    std::ofstream file(temporary, std::ios::binary | std::ios::trunc);
    file << text;
    file.close();
    makeReadable(temporary);
    std::error_code error;
    if (file.good()) fs::rename(temporary, path, error);
    if (file.good() && !error) return true;
    fs::remove(temporary, error);
    failureText = path + " could not be written.";
    return false;
}

bool readManifest(const std::string& path, PublishedManifest& published, std::string& failureText) {
    std::string text;
    if (!readSmallFile(path, kDefaultBodyLimit, text)) {
        failureText = path + " cannot be read, or is larger than launchers accept (4 MiB).";
        return false;
    }
    if (!parseUpdateManifest(text, published.manifest, failureText)) {
        failureText = path + ": " + failureText;
        return false;
    }
    rapidjson::Document document;
    if (parseJsonObject(text, document))
        published.platform = jsonStringMember(document, std::string(site::kPlatformMember).c_str());
    return true;
}

const std::string& PublishedStatement::archiveSha256() const {
    return field(field(statement::PlaintextSha256) == statement::kNoPlaintext ? statement::Sha256
                                                                              : statement::PlaintextSha256);
}

std::string PublishedStatement::label() const {
    return field(statement::Version) + " (" + field(statement::Sha256).substr(0, 16) + ")";
}

bool parseStatementText(const std::string& path, const std::string& text, PublishedStatement& found,
                        std::string& failureText) {
    found.path = path;
    if (parseReleaseStatement(text, found.release) && parseStatementNumbers(found.release, found.numbers)) return true;
    failureText = path + " is not a well-formed release statement.";
    return false;
}

bool readStatements(const std::string& siteDirectory, std::vector<PublishedStatement>& statements,
                    std::string& failureText) {
    statements.clear();
    std::error_code error;
    fs::directory_iterator files(joinPath(siteDirectory, site::kStatementsName), error);
    if (error == std::errc::no_such_file_or_directory) return true;
    for (; !error && files != fs::directory_iterator(); files.increment(error)) {
        const std::string path = files->path().string();
        if (files->path().extension() != statement::kFileExtension) continue;
        std::string text;
        if (!readSmallFile(path, statement::kMaxBytes, text)) text.clear();
        if (!parseStatementText(path, text, statements.emplace_back(), failureText)) return false;
        if (files->path().stem() != statements.back().field(statement::Sha256)) {
            failureText = path + " is for another package than its name says.";
            return false;
        }
    }
    if (error) failureText = joinPath(siteDirectory, site::kStatementsName) + " cannot be read.";
    std::sort(statements.begin(), statements.end(), [](const auto& a, const auto& b) {
        return std::tie(a.field(statement::Version), a.path) < std::tie(b.field(statement::Version), b.path);
    });
    return !error;
}

bool keysLieOutside(const std::string& siteDirectory, const std::vector<PublisherKey>& keys, std::string& failureText) {
    std::error_code error;
    const fs::path root = fs::weakly_canonical(fs::absolute(siteDirectory, error), error) / "";
    for (const PublisherKey& key : keys) {
        const fs::path file = fs::weakly_canonical(fs::absolute(key.path(), error), error);
        // `root` ends with a separator, so its last part is empty. A file is inside `root` if its path starts with all
        // other parts of `root`.
        const auto [inRoot, inFile] = std::mismatch(root.begin(), root.end(), file.begin(), file.end());
        if (inRoot != std::prev(root.end()) || inFile == file.end()) continue;
        failureText = key.path() + " is inside the published directory. Move the private key elsewhere.";
        return false;
    }
    return true;
}

std::string utcDate(std::int64_t seconds) {
    using namespace std::chrono;
    const year_month_day date(floor<days>(sys_seconds(std::chrono::seconds(seconds))));
    char text[32];
    std::snprintf(text, sizeof text, "%04d-%02u-%02u", static_cast<int>(date.year()),
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()));
    return text;
}
