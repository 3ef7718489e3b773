#include "install/update_manifest.h"

#include <filesystem>

#include "system/json.h"
#include "system/url.h"

bool isManifestUrlConfigured(const std::string& url) {
    return !url.empty() && url.find("YOUR_") == std::string::npos;
}

ManifestAnswer fetchManifest(const std::string& manifestUrl, const HttpAbort& abort) {
    HttpsServer server;
    std::string path;
    if (!parseHttpsUrl(manifestUrl, server.host, server.port, path))
        return BadManifest{"The update manifest URL must be a valid https:// URL."};
    server.readTimeoutSeconds = 30;
    server.abort = abort;
    const HttpsAnswer answer = httpsGet(server, path);
    if (!answer.answered) return NoAnswer{};
    if (answer.status != 200)
        return BadManifest{"The update server returned HTTP " + std::to_string(answer.status) + " for the manifest."};
    UpdateManifest manifest;
    std::string failureText;
    if (!parseUpdateManifest(answer.body, manifest, failureText)) return BadManifest{failureText};
    return manifest;
}

bool parseUpdateManifest(const std::string& body, UpdateManifest& manifest, std::string& failureText) {
    rapidjson::Document document;
    if (!parseJsonObject(body, document)) {
        failureText = "The update manifest is not valid JSON.";
        return false;
    }
    manifest.version = jsonStringMember(document, "version");
    manifest.url = jsonStringMember(document, "url");
    manifest.sha256 = jsonStringMember(document, "sha256");
    manifest.plaintextSha256 = jsonStringMember(document, "plaintext_sha256");
    if (document.HasMember("encryption")) manifest.encryptionKey = jsonStringMember(document["encryption"], "key");
    if (manifest.version.empty() || manifest.url.empty()) {
        failureText = "The update manifest is missing its version or url field.";
        return false;
    }
    return true;
}

std::string sanitizeVersion(const std::string& version) {
    std::string text = version;
    for (char& byte : text) {
        const bool kept = (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z') ||
                          (byte >= '0' && byte <= '9') || byte == '-' || byte == '.';
        if (!kept) byte = '_';
    }
    return text;
}

std::string packagePathIn(const std::string& downloadsDirectory, const std::string& version) {
    return (std::filesystem::path(downloadsDirectory) /
            (std::string(kPackageNameStart) + sanitizeVersion(version) + ".zip"))
        .string();
}
