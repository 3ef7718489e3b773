#include "config/launcher_config.h"

#include <filesystem>
#include <string_view>

#include "system/json.h"
#include "system/operating_system.h"
#include "system/platform.h"
#include "system/whole_file.h"

namespace {

namespace fs = std::filesystem;

constexpr char kConfigFile[] = "launcher_config.json";
constexpr char kExampleFile[] = "launcher_config.example.json";

void readAuthenticity(const rapidjson::Document& document, LauncherConfig& config) {
#ifdef VOLO_AUTHENTICITY_URL
    config.artifactAuthenticityUrl = VOLO_AUTHENTICITY_URL;
#else
    config.artifactAuthenticityUrl = jsonStringMember(document, "artifact_authenticity_url");
#endif
#ifdef VOLO_AUTHENTICITY_KEYS
    config.artifactAuthenticityKeys = VOLO_AUTHENTICITY_KEYS;
#else
    config.artifactAuthenticityKeys = jsonStringMember(document, "artifact_authenticity_keys");
#endif
}

} // namespace

LauncherConfig loadLauncherConfig() {
    return loadLauncherConfigFrom(launcherDirectory());
}

LauncherConfig loadLauncherConfigFrom(const std::string& launcherDirectory) {
    LauncherConfig config;
    if (launcherDirectory.empty()) {
        config.message = "Unable to resolve the launcher directory.";
        return config;
    }

    const fs::path directory = launcherDirectory;
    const bool isExample = !fs::exists(directory / kConfigFile);
    std::string content;
    if (!readWholeFile((directory / (isExample ? kExampleFile : kConfigFile)).string(), content) || content.empty()) {
        config.message = "launcher_config.json was not found next to the launcher executable. Copy it from "
                         "launcher_config.example.json, fill in the Google OAuth credentials, and restart.";
        return config;
    }

    rapidjson::Document document;
    if (!parseJsonObject(content, document)) {
        config.message = "launcher_config.json is not valid JSON.";
        return config;
    }

    config.googleClientId = jsonStringMember(document, "google_client_id");
    config.googleClientSecret = jsonStringMember(document, "google_client_secret");
    config.editorUpdateManifestUrl = withPlatformQuery(jsonStringMember(document, "editor_update_manifest_url"));
    std::string downloads = jsonStringMember(document, "downloads_directory");
    if (downloads.empty()) downloads = "downloads";
    config.downloadsDirectory =
        (directory / downloads).lexically_normal().string(); // if `downloads` is absolute, `directory` is ignored
    readAuthenticity(document, config);

    if (!isPlaceholderCredential(config.googleClientId) && !isPlaceholderCredential(config.googleClientSecret)) {
        config.configured = true;
    } else if (isExample) {
        config.message = "Running from launcher_config.example.json. Create launcher_config.json with real Google "
                         "OAuth credentials to enable sign-in.";
    } else {
        config.message = "The Google OAuth credentials in launcher_config.json are still placeholders. Replace the "
                         "YOUR_ values with real credentials and restart.";
    }
    return config;
}

bool isPlaceholderCredential(const std::string& value) {
    return value.empty() || value.starts_with("YOUR_");
}

// Searches for the bytes "platform=" and does not parse the query, so it also finds them at the end of a longer name
// and outside the query.
std::string withPlatformQuery(const std::string& url) {
    constexpr std::string_view key = "platform=";
    std::string result = url;
    const std::size_t found = result.find(key);
    if (found == std::string::npos) {
        result += result.find('?') == std::string::npos ? '?' : '&';
        return result.append(key).append(platformName());
    }
    const std::size_t value = found + key.size();
    return result.replace(value, result.find('&', value) - value, platformName());
}
