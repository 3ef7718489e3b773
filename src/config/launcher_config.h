#pragma once

// Reads launcher_config.json, the configuration file in the executable's folder. The launcher never writes this
// file. The main thread reads it once, before the window opens. The result never changes; workers get copies of the
// values.
//
// The file is one JSON object with string members:
//   google_client_id, google_client_secret   OAuth credentials; required. "YOUR_..." is a placeholder
//   editor_update_manifest_url               optional; the launcher adds the query parameter `platform`
//   downloads_directory                      optional; relative to the launcher's directory, or absolute
//   artifact_authenticity_url                folder of the release statements; optional
//   artifact_authenticity_keys               1 to 4 Ed25519 public keys in base64, separated by spaces; optional
// A build that defines VOLO_AUTHENTICITY_URL or VOLO_AUTHENTICITY_KEYS uses that value instead of the file's.

#include <string>

struct LauncherConfig {
    std::string googleClientId;
    std::string googleClientSecret;
    std::string editorUpdateManifestUrl; // including the query parameter `platform`
    std::string downloadsDirectory;      // absolute and normalised
    std::string message;                 // text of the not-configured screen; empty if `configured` is true
    bool configured = false;             // true: neither credential is a placeholder

    std::string artifactAuthenticityUrl;
    std::string artifactAuthenticityKeys;
};

// Reads launcher_config.json in the executable's folder, or launcher_config.example.json if the first file is missing.
// If no file can be used, `configured` is false and `message` is set.
[[nodiscard]] LauncherConfig loadLauncherConfig();

// Does the same as loadLauncherConfig for the given directory. An empty text means that the launcher's directory is
// unknown.
[[nodiscard]] LauncherConfig loadLauncherConfigFrom(const std::string& launcherDirectory);

[[nodiscard]] bool isPlaceholderCredential(const std::string& value);

// Returns the URL with the query parameter `platform` set to this platform's name.
[[nodiscard]] std::string withPlatformQuery(const std::string& url);
